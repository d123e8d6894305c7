// Runs the hardware scanner on captured trees with changed files and with package databases of every kind.
#include <sys/utsname.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "fuzz/hostile/Harness.h"
#include "fuzz/hostile/Mutations.h"
#include "fuzz/hostile/PackageDatabases.h"
#include "schema/FieldForm.h"
#include "tests/toolkit/quorvah/ScannerProcess.h"
#include "toolkit/quorvah/groups/GroupTable.h"

namespace {

using hostile::Problem;
using hostile::Random;
namespace fs = std::filesystem;

const std::string kCanary = "CANARY-9d1c3f7a";
// A scan has 60 seconds. Sanitizers and other programs slow down what follows.
constexpr std::chrono::seconds kMaxTime{90};

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The text with some of its numbers replaced by invalid ones.
std::string withWrongNumbers(Random& random, const std::string& text) {
    static const std::string kWrong[] = {"-1",
                                         "-9223372036854775808",
                                         "+5",
                                         "0x10",
                                         "9223372036854775807",
                                         "9223372036854775808",
                                         "18446744073709551615",
                                         "99999999999999999999999",
                                         "4294967295",
                                         "0",
                                         ""};
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
        if (end == at) {
            result += text[at++];
        } else {
            result += random.oneIn(4) ? random.pick(kWrong) : text.substr(at, end - at);
            at = end;
        }
    }
    return result;
}

// Writes the files of a captured tree, some of them changed. Returns the files that are to change during the scan.
std::vector<fs::path> writeTree(Random& random, const fs::path& source, const fs::path& tree,
                                const fs::path& outside) {
    std::vector<fs::path> changing;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(source)) {
        const fs::path file = tree / entry.path().lexically_relative(source);
        std::error_code ignored;
        if (entry.is_symlink()) {
            if (hostile::clear(file)) fs::copy_symlink(entry.path(), file, ignored);
        } else if (entry.is_regular_file()) {
            const std::string content = contentOf(entry.path());
            if (random.oneIn(6)) {
                hostile::putHostile(random, file, content, outside / "secret");
            } else {
                hostile::write(file, random.oneIn(2) ? withWrongNumbers(random, content) : content);
            }
            if (random.oneIn(20)) changing.push_back(file);
        }
    }
    for (const hostile::Seed& seed : hostile::packageDatabases(random)) {
        if (random.oneIn(2))
            hostile::putHostile(random, tree / seed.path, seed.content, outside / "secret");
        else
            hostile::write(tree / seed.path, withWrongNumbers(random, seed.content));
        if (random.oneIn(4)) changing.push_back(tree / seed.path);
    }
    return changing;
}

// Adds many entries with odd names to directories that groups list.
void addEntries(Random& random, const fs::path& tree) {
    static const char* const kListed[] = {
        "sys/block", "sys/class/net", "sys/bus/pci/devices",   "sys/bus/usb/devices", "sys/bus/pci/slots",
        "proc",      "snap",          "sys/devices/system/cpu"};
    for (std::size_t i = random.below(3); i > 0; --i) {
        const fs::path directory = tree / random.pick(kListed);
        std::error_code ignored;
        fs::create_directories(directory, ignored);
        for (std::size_t entry = random.oneIn(10) ? 5'000 : random.below(30); entry > 0; --entry)
            fs::create_directory_symlink(random.oneIn(2) ? "." : "/",
                                         directory / ("x" + std::to_string(entry)), ignored);
        if (fs::is_directory(directory, ignored)) hostile::addOddDirectories(random, directory);
    }
}

std::string configurationOfAllGroups() {
    std::string text = "<Configuration>";
    for (const toolkit::quorvah::Group* const group : toolkit::quorvah::allGroups())
        text.append("<Group Name=\"").append(group->displayName).append("\"/>");
    return text + "</Configuration>";
}

Problem checkValues(const fs::path& output) {
    bool hasScanInfo = false;
    for (const quorvahtest::Element& element : quorvahtest::readOutput(output)) {
        hasScanInfo = hasScanInfo || element.group == "ScanInfo";
        const toolkit::quorvah::Group* const group = toolkit::quorvah::findGroup(element.group);
        if (group == nullptr || group->fields.size() != element.fields.size())
            return element.group + " does not have the fields of a group";
        for (std::size_t i = 0; i < element.fields.size(); ++i) {
            const auto& [field, value] = element.fields[i];
            if (!schema::hasForm(group->fields[i], value))
                return element.group + "." + field + " is \"" + value.substr(0, 100) + "\"";
        }
    }
    return hasScanInfo ? Problem() : "ScanInfo is missing";
}

// Texts that only the scanning machine has.
std::vector<std::string> ownTexts() {
    utsname names{};
    ::uname(&names);
    std::string bootId = contentOf("/proc/sys/kernel/random/boot_id");
    bootId.resize(std::min(bootId.size(), bootId.find('\n')));
    std::vector<std::string> texts = {names.release, names.version, bootId};
    std::erase_if(texts, [](const std::string& text) { return text.size() < 8; });
    return texts;
}

Problem checkOrigin(const fs::path& output) {
    const std::string content = contentOf(output);
    for (const std::string& text : ownTexts()) {
        if (content.find(text) != std::string::npos)
            return "the output contains the scanning machine's \"" + text + "\"";
    }
    return {};
}

Problem runCaseIn(Random& random, const fs::path& directory, std::string& command) {
    static const char* const kTrees[] = {"arm64-board", "container",   "contradictory",
                                         "hybrid",      "kvm-guest",   "ppc64le",
                                         "s390x",       "workstation", "x86-server"};
    const fs::path outside = directory / "outside";
    for (const char* const name : {"secret", "size", "uevent", "meta/snap.yaml", "address"})
        hostile::write(outside / name, "name: " + kCanary + "\n");
    const fs::path tree = directory / "tree";
    const std::vector<fs::path> changing =
        writeTree(random, fs::path(QUORVAH_TREES) / random.pick(kTrees), tree, outside);
    addEntries(random, tree);
    const fs::path swapped = tree / (random.oneIn(2) ? "sys" : "var/lib");
    std::error_code ignored;
    fs::create_directories(swapped, ignored);

    const bool wrong = random.oneIn(10);
    std::string configuration = configurationOfAllGroups();
    if (wrong) configuration = hostile::mutatedText(random, std::move(configuration));
    const fs::path config = directory / "config.xml";
    hostile::write(config, configuration);
    const fs::path output = directory / "out.xml";
    std::unique_ptr<hostile::ChangingFiles> thread;
    if (random.oneIn(2)) thread = std::make_unique<hostile::ChangingFiles>(swapped, outside, changing);
    const hostile::Run run =
        hostile::run(QUORVAH_PROGRAM, {"-c", config, "-o", output, "--root", tree}, directory, kMaxTime);
    thread.reset();
    command = run.command;

    Problem problem = hostile::checkRun(run, wrong ? std::vector<int>{0, 2} : std::vector<int>{0}, directory);
    if (!problem.empty() || run.status == 2) return problem;
    problem = hostile::checkOutput(output, kCanary);
    if (problem.empty()) problem = checkOrigin(output);
    if (problem.empty() && !wrong) problem = checkValues(output);
    if (problem.empty() && run.messages.find(kCanary) != std::string::npos)
        problem = "its messages contain content from outside the root";
    return problem;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    return hostile::runCases(argumentCount, arguments, runCaseIn);
}
