#include "toolkit/quorvis/Scan.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <system_error>

#include "toolkit/machine/OutputFile.h"
#include "toolkit/quorvis/Configuration.h"
#include "toolkit/quorvis/Evaluator.h"
#include "toolkit/quorvis/HashCache.h"
#include "toolkit/quorvis/OutputDocument.h"
#include "toolkit/quorvis/Sandbox.h"
#include "toolkit/quorvis/SignatureReader.h"
#include "toolkit/quorvis/WarningsDocument.h"

namespace toolkit::quorvis {

namespace {

Outcome refuse(const std::string& message) {
    std::fprintf(stderr, "quorvis: %s\n", message.c_str());
    return Outcome::BadInput;
}

void say(const std::string& line) {
    std::puts(line.c_str());
}

void writeFiles(const Options& options, const std::vector<Match>& matches, const EventList& events) {
    for (const EventList::Entry& entry : events.entries()) say(lineOf(entry));
    writeOutputFile(options.output, outputDocument(matches, !events.toldLimit()));
    writeOutputFile(options.warnings, warningsDocument(events));
}

// The tree to look at: that of the command line, of the setting, or the machine itself.
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

// What the scanner itself gives a value, for all signatures.
void addOwnVariables(const Root& root, std::vector<PresetValue>& presets) {
    presets.push_back({"quorvis.root", root.live() ? "/" : root.directory(), {}});
    presets.push_back({"quorvis.arch", QUORVIS_MACHINE, {}});
}

Outcome refuseSignatures(const Options& options, const SignatureFile& file, EventList& events) {
    std::string text = file.problems.front();
    const std::size_t more = file.problems.size() - 1;
    if (more > 0) text += " (and " + std::to_string(more) + " more, which --check lists)";
    events.add({EventCode::Invalid, {}, std::move(text), {}, {}});
    writeFiles(options, {}, events);
    return Outcome::BadSignatures;
}

// Ends the process at once: to take apart, piece by piece, all that was read would be a good part of a short run.
[[noreturn]] void leave(Outcome outcome) {
    std::fflush(stdout);
    std::_Exit(static_cast<int>(outcome));
}

}  // namespace

Outcome scan(const Options& options) {
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

    SignatureFile file = readSignatureFile(options.signatures, settings);
    events.add(std::move(file.events));
    if (!file.problems.empty()) return refuseSignatures(options, file, events);

    HashCache hashes(settings.evaluation.cache);
    enterSandbox(settings);
    addOwnVariables(*root, configuration.presets);
    const Presets presets(std::move(configuration.presets));
    Machine machine(*root, settings);
    machine.files().keepSumsIn(hashes);
    Evaluator evaluator(presets, machine, events);
    evaluator.explain(options.explain);
    const std::vector<Match> matches = evaluator.evaluate(file.signatures);
    for (const std::string& line : evaluator.explanation()) say(line);
    events.add(hashes.save());
    writeFiles(options, matches, events);
    say("signatures: " + std::to_string(file.signatures.size()) +
        ", matches: " + std::to_string(matches.size()));
    leave(Outcome::Done);
}

Outcome check(const Options& options) {
    const SignatureFile file = readSignatureFile(options.signatures, Settings());
    for (const std::string& problem : file.problems) say(problem);
    for (const std::string& warning : file.warnings) say(warning + " (warning)");
    for (const Event& event : file.events) say(options.signatures + ": " + event.text);
    if (!file.problems.empty()) return Outcome::BadSignatures;
    say(options.signatures + ": valid, signatures: " + std::to_string(file.signatures.size()));
    return Outcome::Done;
}

}  // namespace toolkit::quorvis
