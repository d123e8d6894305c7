#include "toolkit/quorvis/evaluation/ScanWorker.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include "toolkit/machine/files/WriteAll.h"
#include "toolkit/quorvis/evaluation/Evaluator.h"
#include "toolkit/quorvis/evaluation/ScanMessage.h"
#include "toolkit/quorvis/files/HashCache.h"
#include "toolkit/quorvis/language/SignatureReader.h"
#include "toolkit/quorvis/report/Documents.h"
#include "toolkit/quorvis/sandbox/Sandbox.h"

namespace toolkit::quorvis {

namespace {

using Kind = ScanMessage::Kind;

constexpr std::size_t kLargestMatch = std::size_t{16} << 20;
constexpr std::size_t kLongestLine = std::size_t{4} << 10;

// Ends the process at once: to take apart, piece by piece, all that was read would be a good part of a short run.
[[noreturn]] void leave(int status) {
    std::_Exit(status);
}

class Report : public EvaluationSink {
  public:
    Report(int pipe, ScanTail& tail) : pipe_(pipe), tail_(tail) {}

    void onBegin(std::size_t index, std::string_view guid) override {
        const std::size_t length = std::min(guid.size(), tail_.guid.size() - 1);
        *std::copy_n(guid.begin(), length, tail_.guid.begin()) = '\0';
        tail_.begun = index + 1;
    }
    void onMatch(const Match& match) override {
        std::string element;
        appendMatch(element, match);
        if (element.size() > kLargestMatch) {
            onEvent({EventCode::LimitBytes,
                     {},
                     "a match of more than 16 MiB was left out",
                     std::string(match.guid),
                     {}});
            return;
        }
        tell(Kind::Match, std::move(element));
    }
    void onEvent(Event event) override { send(messageOf(std::move(event))); }
    void onExplanation(std::string line) override {
        line.resize(std::min(line.size(), kLongestLine));
        tell(Kind::Explanation, std::move(line));
    }

    void onEvents(std::vector<Event> events) {
        for (Event& event : events) onEvent(std::move(event));
    }
    void tell(Kind kind, std::string text) {
        ScanMessage message{kind, 0, {}};
        message.texts.push_back(std::move(text));
        send(message);
    }
    void send(const ScanMessage& message) {
        const std::string bytes = encoded(message);
        if (bytes.size() > tail_.bytes.size() - tail_.used) flush();
        if (bytes.size() > tail_.bytes.size()) return write(bytes);
        std::memcpy(tail_.bytes.data() + tail_.used, bytes.data(), bytes.size());
        tail_.used += bytes.size();
    }
    SharedDeadline& deadline() { return tail_.deadline; }
    void flush() {
        const std::size_t used = tail_.used;
        write({tail_.bytes.data(), used});
    }

  private:
    // The reader knows by the count of the bytes that it got through the pipe which of those in the tail it has already,
    // wherever this is cut off.
    void write(std::string_view bytes) {
        // Nobody waits any more.
        if (!writeAll(pipe_, bytes)) leave(1);
        if (bytes.data() == tail_.bytes.data()) tail_.used = 0;
        tail_.sent += bytes.size();
    }

    int pipe_;
    ScanTail& tail_;
};

// What the scanner itself gives a value, for all signatures.
std::vector<PresetValue> withOwnVariables(std::vector<PresetValue> presets, const Root& root) {
    presets.push_back({"quorvis.root", root.live() ? "/" : root.directory(), {}});
    presets.push_back({"quorvis.arch", QUORVIS_MACHINE, {}});
    return presets;
}

// False when the evaluation must not go on.
bool confine(const ScanJob& job, const ScanAttempt& attempt, Report& report) {
    const std::string missing = enterSandbox(job.settings);
    if (missing.empty()) return true;
    const std::string text = "The sandbox is not whole here: " + missing;
    if (attempt.first == 0) report.onEvent({EventCode::Sandbox, {}, text, {}, {}});
    if (job.settings.sandbox.required)
        report.tell(Kind::Failed, text + " (the setting Sandbox/required allows to go on)");
    return !job.settings.sandbox.required;
}

SignatureFile readSignatures(const ScanJob& job) {
    try {
        return readSignatureFile(job.options.signatures, job.signatures, job.settings);
    } catch (const std::bad_alloc&) {
        SignatureFile refused;
        refused.problems.push_back(job.options.signatures + ": takes more memory than is allowed");
        return refused;
    }
}

void evaluate(const ScanJob& job, const ScanAttempt& attempt, Report& report) {
    HashCache hashes(job.settings.evaluation.cache);
    if (!confine(job, attempt, report)) return;
    SignatureFile file = readSignatures(job);
    if (attempt.first == 0) report.onEvents(std::move(file.events));
    for (std::string& problem : file.problems) report.tell(Kind::Refused, std::move(problem));
    if (!file.problems.empty()) return;
    report.send({Kind::Signatures, file.signatures.size(), {}});

    const Presets presets(withOwnVariables(job.presets, job.root));
    EvaluationContext context(job.root, job.settings, job.start);
    context.budget().publishDeadline(report.deadline());
    if (!attempt.walks) context.tree().refuseWalks();
    if (!attempt.together) context.contentFilters().turnOff();
    context.files().useHashCache(hashes);
    Evaluator evaluator(presets, context, report);
    evaluator.explain(job.options.explain);
    evaluator.evaluate(file.signatures, attempt.first);
    report.onEvents(hashes.save());
}

}  // namespace

void workOn(const ScanJob& job, const ScanAttempt& attempt, int pipe, ScanTail& tail) {
    Report report(pipe, tail);
    try {
        evaluate(job, attempt, report);
        report.send({Kind::Done, 0, {}});
    } catch (const std::bad_alloc&) {
        leave(1);
    } catch (const std::exception& failure) {
        report.tell(Kind::Failed, failure.what());
    }
    report.flush();
    leave(0);
}

}  // namespace toolkit::quorvis
