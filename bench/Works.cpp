#include "bench/Works.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "bench/Process.h"
#include "bench/SoftwareWorks.h"
#include "bench/peers/BareSpawn.h"
#include "bench/peers/DirectTables.h"
#include "bench/peers/ExpatTokens.h"
#include "bench/peers/LibxmlTables.h"
#include "bench/peers/PugixmlTables.h"
#include "hw/HWPlainOutput.h"
#include "include/zav.h"
#include "intake/ScannerProcess.h"
#include "kest/Text.h"

namespace zavbench {

namespace {

using Action = std::function<bool()>;

std::shared_ptr<ZAVHwCtx> emptyTables() {
    auto context = std::make_shared<ZAVHwCtx>();
    context->discardResults();
    return context;
}

Action readWithLibrary(const Arguments& arguments) {
    return [path = kest::widen(arguments.at(0)), context = emptyTables()] {
        return zav::HW_readPlainOutput(context.get(), path) >= 0;
    };
}

Action readWithExpat(const Arguments& arguments) {
    return [path = arguments.at(0)] { return tokeniseWithExpat(path); };
}

Action readWithLibxml(const Arguments& arguments) {
    return [path = arguments.at(0), context = emptyTables()] { return fillTablesWithLibxml(path, *context); };
}

Action readWithPugixml(const Arguments& arguments) {
    return
        [path = arguments.at(0), context = emptyTables()] { return fillTablesWithPugixml(path, *context); };
}

bool getValues(ZAVHwCtx* context, int group, int instance) {
    const wchar_t** names = nullptr;
    int count = 0;
    if (ZAV_hw_get_fields(context, group, instance, &names, &count) != 0) return false;
    const wchar_t* value = nullptr;
    for (int i = 0; i < count; ++i) {
        if (ZAV_hw_get_value(context, group, instance, names[i], &value) != 0) return false;
    }
    return true;
}

// Reads the file, and then every value once through the getters.
Action readEveryValue(const Arguments& arguments) {
    return [path = kest::widen(arguments.at(0)), context = emptyTables()] {
        if (zav::HW_readPlainOutput(context.get(), path) <= 0) return false;
        context->returnCode = 0;
        context->groupEnabled.fill(1);
        for (int group = zav::kFirstGroup; group <= zav::kLastGroup; ++group) {
            int instances = 0;
            if (ZAV_hw_get_group_instances(context.get(), group, &instances) != 0) return false;
            for (int i = 0; i < instances; ++i) {
                if (!getValues(context.get(), group, i)) return false;
            }
        }
        return true;
    };
}

Action readTablesAlone(const Arguments& arguments) {
    return [path = arguments.at(0), context = emptyTables()] { return fillTablesDirectly(path, *context); };
}

// A host with a hardware context and no callback. `toolkit` is the directory of its scanner, `tempDir` that of its
// files.
class Host {
  public:
    Host(const std::string& toolkit, const std::string& tempDir) {
        const std::wstring directory = kest::widen(toolkit);
        const std::wstring files = kest::widen(tempDir);
        const bool made =
            ZAV_init("bench", nullptr, nullptr, files.c_str(), directory.c_str(), &library_) == 0 &&
            ZAV_hw_init(library_, nullptr, nullptr, &context_) == 0;
        if (!made) std::abort();
    }
    ~Host() {
        ZAV_hw_free(context_);
        ZAV_free(library_);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Runs a scanner that succeeds without writing an output file.
    bool run() { return ZAV_hw_run(context_) == ZAV_ERROR_HW_OUTPUT; }

  private:
    ZAVCtx* library_ = nullptr;
    ZAVHwCtx* context_ = nullptr;
};

Action repeated(const std::string& times, Action action) {
    return [count = std::atoi(times.c_str()), action = std::move(action)] {
        bool good = true;
        for (int i = 0; i < count && good; ++i) good = action();
        return good;
    };
}

// Arguments: toolkit directory, number of runs, directory for files, resident memory of the host in bytes.
Action runLibrary(const Arguments& arguments) {
    const auto size = static_cast<std::size_t>(std::atoll(arguments.at(3).c_str()));
    const std::shared_ptr<char> memory(static_cast<char*>(std::malloc(size + 1)), std::free);
    std::memset(memory.get(), 1, size + 1);
    const auto host = std::make_shared<Host>(arguments.at(0), arguments.at(2));
    return repeated(arguments.at(1), [memory, host] { return host->run(); });
}

// Arguments: toolkit directory, number of runs.
Action launchAlone(const Arguments& arguments) {
    const std::vector<std::string> command = {arguments.at(0) + "/quorvah", "-c"};
    const std::wstring directory = kest::widen(arguments.at(0));
    return repeated(arguments.at(1), [command, directory] {
        zav::ScannerProcess scanner(nullptr, "bench", command, directory);
        return scanner.started() && scanner.drain() == 0 && scanner.check() == 0;
    });
}

Action spawnAlone(const Arguments& arguments) {
    const std::string program = arguments.at(0) + "/quorvah";
    return repeated(arguments.at(1), [program] { return spawnBare(program, "-c"); });
}

// Arguments: toolkit directory, number of runs, directory for files.
Action spawnAndMakeFile(const Arguments& arguments) {
    const std::string program = arguments.at(0) + "/quorvah";
    std::string directory = arguments.at(2) + "/peer_XXXXXX";  // removed with its parent directory
    if (::mkdtemp(directory.data()) == nullptr) std::abort();
    return repeated(arguments.at(1), [program, directory, number = 0]() mutable {
        return makeFile(directory + "/config" + std::to_string(++number)) && spawnBare(program, "-c");
    });
}

Action nothing(const Arguments& /*arguments*/) {
    return [] { return true; };
}

const std::map<std::string, Work> kWorks = {
    {"read", readWithLibrary},
    {"read-expat", readWithExpat},
    {"read-libxml", readWithLibxml},
    {"read-pugixml", readWithPugixml},
    {"read-values", readEveryValue},
    {"tables", readTablesAlone},
    {"run", runLibrary},
    {"launch", launchAlone},
    {"spawn", spawnAlone},
    {"spawn-file", spawnAndMakeFile},
    {"nothing", nothing},
};

}  // namespace

const std::map<std::string, Work>& allWorks() {
    static const std::map<std::string, Work> works = [] {
        std::map<std::string, Work> all = softwareWorks();
        all.insert(kWorks.begin(), kWorks.end());
        return all;
    }();
    return works;
}

}  // namespace zavbench
