#include "toolkit/quorvis/evaluation/Scan.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "toolkit/machine/files/OutputFile.h"
#include "toolkit/machine/sandbox/Sandbox.h"
#include "toolkit/quorvis/evaluation/ScanSupervisor.h"
#include "toolkit/quorvis/language/SignatureReader.h"
#include "toolkit/quorvis/report/Documents.h"
#include "toolkit/quorvis/sandbox/Sandbox.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

namespace {

// Of the process that reads the input and writes the output files. The settings limit the one that evaluates.
constexpr std::uint64_t kMemoryForInput = std::uint64_t{1} << 30;

Outcome refuse(const std::string& message) {
    std::fprintf(stderr, "quorvis: %s\n", message.c_str());
    return Outcome::BadInput;
}

void say(const std::string& line) {
    std::puts(line.c_str());
}

void writeFiles(const Options& options, const MatchElements& matches, const EventList& events,
                bool complete = true) {
    writeOutputFile(options.output, [&](const TextSink& sink) {
        writeOutputDocument(matches, complete && !events.reachedLimit(), sink);
    });
    writeOutputFile(options.warnings, warningsDocument(events));
}

void sayEvents(const EventList& events) {
    for (const std::string& line : linesOf(events)) say(line);
}

// The root of the command line, else that of the settings, else the live machine.
std::optional<Root> openRoot(const Options& options, const Settings& settings, std::string& problem) {
    const std::string& directory = options.root.empty() ? settings.fileSystem.root : options.root;
    if (directory.empty() || directory == "/") return Root();
    try {
        return Root(directory);
    } catch (const std::system_error& failure) {
        problem = failure.what();
        return std::nullopt;
    }
}

Outcome refuseSignatures(const Options& options, const std::vector<std::string>& problems,
                         EventList& events) {
    std::string text = problems.front();
    const std::size_t more = problems.size() - 1;
    if (more > 0) text += " (and " + std::to_string(more) + " more, which --check lists)";
    events.add({EventCode::Invalid, {}, std::move(text), {}, {}});
    writeFiles(options, {}, events);
    sayEvents(events);
    return Outcome::BadSignatures;
}

// Ends the process without destructors: freeing all signatures one by one would take a good part of a short run.
[[noreturn]] void leave(Outcome outcome) {
    std::fflush(stdout);
    std::_Exit(static_cast<int>(outcome));
}

}  // namespace

Outcome scan(const Options& options) {
    const auto start = std::chrono::steady_clock::now();
    boundMemory(kMemoryForInput);
    Configuration configuration = readConfiguration(options.config);
    if (!configuration.error.empty()) return refuse(configuration.error);
    EventList events;
    events.add(std::move(configuration.events));
    std::vector<Event> settingEvents;
    const Settings settings = makeSettings(configuration.settings, settingEvents);
    events.add(std::move(settingEvents));
    std::string problem;
    const std::optional<Root> root = openRoot(options, settings, problem);
    if (!root) return refuse(problem);

    const DocumentText signatures = readDocument(options.signatures);
    const ScanResult found =
        superviseScan({options, settings, *root, configuration.presets, signatures, start}, events);
    if (!found.failure.empty()) {
        writeFiles(options, {}, events, false);
        sayEvents(events);
        throw std::runtime_error(found.failure);
    }
    if (!found.problems.empty()) return refuseSignatures(options, found.problems, events);
    writeFiles(options, found.matches, events);
    for (const std::string& line : found.explanation) say(line);
    sayEvents(events);
    say("signatures: " + std::to_string(found.signatureCount) +
        ", matches: " + std::to_string(found.matchCount));
    leave(Outcome::Done);
}

Outcome check(const Options& options) {
    boundMemory(kMemoryForInput);
    const DocumentText document = readDocument(options.signatures);
    const std::string missing = enterSandbox(Settings());
    if (!missing.empty()) say("the sandbox is incomplete: " + missing);
    // The host decides whether the whole tree may be searched; it is no mistake of a signature.
    Settings settings;
    settings.fileSystem.wholeTree = true;
    SignatureFile file;
    try {
        file = readSignatureFile(options.signatures, document, settings);
    } catch (const std::bad_alloc&) {
        file.problems.push_back(options.signatures + ": takes more memory than is allowed");
    }
    for (const std::string& problem : file.problems) say(problem);
    for (const std::string& warning : file.warnings) say(warning + " (warning)");
    for (const Event& event : file.events) say(options.signatures + ": " + event.text);
    if (!file.problems.empty()) return Outcome::BadSignatures;
    say(options.signatures + ": valid, signatures: " + std::to_string(file.signatures.size()));
    return Outcome::Done;
}

}  // namespace toolkit::quorvis
