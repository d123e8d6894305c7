#include "toolkit/quorvah/scan/HardwareScan.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "toolkit/machine/files/OutputFile.h"
#include "toolkit/machine/files/Recorder.h"
#include "toolkit/machine/sandbox/WorkerProcess.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/OutputDocument.h"
#include "toolkit/quorvah/report/Sanitizer.h"
#include "toolkit/quorvah/scan/Configuration.h"
#include "toolkit/quorvah/scan/GatheringSandbox.h"
#include "toolkit/quorvah/scan/GroupGatherer.h"
#include "toolkit/quorvah/scan/RecordFilter.h"

namespace toolkit::quorvah {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Whether a directory can be opened, or refuses that, in time. Another machine or a program that provides it may never
// answer.
bool answers(const std::string& directory) {
    constexpr std::chrono::seconds kPatience(5);
    WorkerProcess opener([&directory](int /*pipe*/) {
        ::close(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    });
    if (!opener.waitForInput(Clock::now() + kPatience)) return false;
    opener.join();
    return true;
}

GatheringContext openScan(Options options) {
    if (!options.root.empty() && !answers(options.root)) throw BadInput(options.root + " does not answer");
    try {
        return GatheringContext(std::move(options));
    } catch (const std::system_error& failure) {
        throw BadInput(failure.what());
    }
}

class HardwareScan {
  public:
    explicit HardwareScan(Options options) : context_(openScan(std::move(options))) {
        if (context_.options().sanitize) sanitizer_.emplace();
        startRecord();
        context_.summary.startTime = std::time(nullptr);
    }

    void run() {
        const std::vector<const Group*> wanted = readWanted();
        std::vector<const Group*> gathered = wanted;
        const bool wantsScanInfo = std::erase(gathered, &kScanInfo) > 0;
        if (!gathered.empty() && canGatherInProcess(context_, gathered)) {
            const std::string missing = enterGatheringSandbox();
            if (!missing.empty()) reportIncompleteSandbox(context_, missing);
        }
        gatherGroups(
            context_, gathered, Limits(), [this](GroupData& data) { prepare(data); },
            [this](GroupResult&& result) { add(std::move(result)); });
        if (wantsScanInfo) addScanInfo();
        finishRecord();
        writeOutputFile(context_.options().output, [this](const TextSink& sink) {
            writeDocument(results_, context_.options().pretty, sink);
        });
    }

  private:
    void startRecord() {
        const Options& options = context_.options();
        if (options.record.empty()) return;
        try {
            recorder_.emplace(options.record, options.root, withoutPasswords);
        } catch (const std::system_error& failure) {
            throw BadInput(std::string("the record cannot be written: ") + failure.what());
        }
        context_.record(&*recorder_);
    }

    void finishRecord() {
        if (!recorder_) return;
        const std::string problem = recorder_->finish();
        if (!problem.empty()) throw std::runtime_error(problem);
    }

    // The requested groups, each once, in the order of the table.
    std::vector<const Group*> readWanted() {
        const Configuration configuration = readConfiguration(context_.options().config);
        if (!configuration.error.empty()) throw BadInput(configuration.error);
        for (const std::string& warning : configuration.warnings)
            warn(context_.options().config + ": " + warning);
        std::vector<const Group*> named;
        for (const std::string& name : configuration.groups) {
            const Group* const group = findGroup(name);
            if (group == nullptr) warn("unknown group \"" + name + "\"");
            named.push_back(group);
        }
        std::vector<const Group*> wanted;
        for (const Group* const group : allGroups()) {
            if (std::ranges::find(named, group) == named.end()) continue;
            wanted.push_back(group);
            context_.summary.requested.emplace_back(group->xmlName);
        }
        return wanted;
    }

    void warn(const std::string& text) {
        std::fprintf(stderr, "quorvah: %s\n", text.c_str());
        context_.summary.warnings.push_back(text);
    }

    // Applies the options that omit or hide values, and sorts the instances.
    void prepare(GroupData& data) const {
        if (context_.options().noVolatile) dropVolatile(data);
        if (sanitizer_) sanitizer_->hide(data);
        data.sort();
    }

    void addToSummary(const GroupResult& result) {
        ScanSummary& summary = context_.summary;
        const std::string name = result.group->xmlName;
        switch (result.state) {
            case GroupState::Complete:
                return summary.complete.push_back(name);
            case GroupState::NotApplicable:
                return summary.notApplicable.push_back(name + "=" + result.reason);
            case GroupState::Unsupported:
                return summary.unsupported.push_back(name);
            case GroupState::Partial:
                return summary.partial.push_back(name + "=" + result.reason);
            case GroupState::Unread:
                return summary.unread.push_back(name + "=" + result.reason);
        }
    }

    // Drops the instances of a group that would make the file larger than a host reads.
    void limitSize(GroupResult& result) {
        constexpr std::size_t kMaxXmlBytes = std::size_t{192} << 20;
        if (result.xml.size() <= kMaxXmlBytes - rendered_) {
            rendered_ += result.xml.size();
            return;
        }
        result.xml = {};
        result.memory.reset();
        result.instances = 0;
        result.state = GroupState::Unread;
        result.reason = "too-large";
    }

    void add(GroupResult&& result) {
        const char* const name = result.group->xmlName;
        limitSize(result);
        addToSummary(result);
        for (const std::string& warning : result.warnings) warn(warning);
        std::printf("group %s: %zu instance%s, %lld ms%s%s\n", name, result.instances,
                    result.instances == 1 ? "" : "s", static_cast<long long>(result.elapsed.count()),
                    result.reason.empty() ? "" : ", ", result.reason.c_str());
        std::fflush(stdout);
        results_.push_back(std::move(result));
    }

    void addScanInfo() {
        const Clock::time_point start = Clock::now();
        ScanSummary& summary = context_.summary;
        summary.endTime = std::time(nullptr);
        summary.elapsed = std::chrono::duration_cast<milliseconds>(start - start_).count();
        summary.complete.emplace_back(kScanInfo.xmlName);  // ScanInfo lists itself as well
        GroupData data(kScanInfo);
        kScanInfo.gather(context_, data);
        summary.complete.pop_back();  // add() adds it again
        data.setElapsed(std::chrono::duration_cast<milliseconds>(Clock::now() - start));
        prepare(data);
        add(render(data, context_.options().pretty));
    }

    const Clock::time_point start_ = Clock::now();
    GatheringContext context_;
    std::optional<Sanitizer> sanitizer_;
    std::optional<Recorder> recorder_;
    std::vector<GroupResult> results_;
    std::size_t rendered_ = 0;  // bytes of XML of all results
};

}  // namespace

void runHardwareScan(Options options) {
    HardwareScan(std::move(options)).run();
}

}  // namespace toolkit::quorvah
