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
#include "toolkit/quorvis/files/HashCache.h"
#include "toolkit/quorvis/language/SignatureReader.h"
#include "toolkit/quorvis/report/Documents.h"
#include "toolkit/quorvis/sandbox/Sandbox.h"

namespace toolkit::quorvis {

namespace {

using Kind = ScanMessage::Kind;

constexpr std::size_t kMaxMatchBytes = std::size_t{16} << 20;
constexpr std::size_t kMaxLineBytes = std::size_t{4} << 10;

// Ends the process without destructors: freeing all signatures one by one would take a good part of a short run.
[[noreturn]] void leave(int status) {
    std::_Exit(status);
}

// Sends what an evaluation finds to the supervisor.
class MessageSender : public EvaluationSink {
  public:
    MessageSender(int pipe, WorkerOutput& output) : pipe_(pipe), output_(output) {}

    void onBegin(std::size_t index, std::string_view guid) override {
        const std::size_t length = std::min(guid.size(), output_.guid.size() - 1);
        *std::copy_n(guid.begin(), length, output_.guid.begin()) = '\0';
        output_.lastDetection = true;
        output_.begun = index + 1;
    }
    void onDetection(std::size_t index, bool last) override {
        output_.detection = index;
        output_.lastDetection = last;
    }
    void onProgress(std::size_t done, std::size_t total) override {
        output_.itemsDone = done;
        output_.items = total;
    }
    void onItem() override { output_.itemsDone.fetch_add(1, std::memory_order_relaxed); }
    void onMatch(const Match& match) override {
        std::string element;
        appendMatch(element, match);
        if (element.size() > kMaxMatchBytes) {
            onEvent({EventCode::LimitBytes,
                     {},
                     "a match of more than 16 MiB was left out",
                     std::string(match.guid),
                     {}});
            return;
        }
        sendText(Kind::Match, std::move(element));
    }
    void onEvent(Event event) override { send(messageOf(std::move(event))); }
    void onExplanation(std::string line) override {
        line.resize(std::min(line.size(), kMaxLineBytes));
        sendText(Kind::Explanation, std::move(line));
    }

    void onSignatures(std::size_t count) {
        output_.count = count;
        send({Kind::Signatures, count, {}});
    }
    void onEvents(std::vector<Event> events) {
        for (Event& event : events) onEvent(std::move(event));
    }
    void sendText(Kind kind, std::string text) {
        ScanMessage message{kind, 0, {}};
        message.texts.push_back(std::move(text));
        send(message);
    }
    void send(const ScanMessage& message) {
        const std::string bytes = encoded(message);
        if (bytes.size() > output_.bytes.size() - output_.used) flush();
        if (bytes.size() > output_.bytes.size()) return write(bytes);
        std::memcpy(output_.bytes.data() + output_.used, bytes.data(), bytes.size());
        output_.used += bytes.size();
    }
    SharedDeadline& deadline() { return output_.deadline; }
    WalkProgress& walk() { return output_.walk; }
    void flush() {
        const std::size_t used = output_.used;
        write({output_.bytes.data(), used});
    }

  private:
    // The order matters, since the process may be killed at any point here: by the number of bytes that it has received, the
    // supervisor knows which bytes of the output it already has.
    void write(std::string_view bytes) {
        // The supervisor is gone.
        if (!writeAll(pipe_, bytes)) leave(1);
        if (bytes.data() == output_.bytes.data()) output_.used = 0;
        output_.sent += bytes.size();
    }

    int pipe_;
    WorkerOutput& output_;
};

// With the variables of the scanner itself, for all signatures.
std::vector<PresetValue> withOwnVariables(std::vector<PresetValue> presets, const Root& root) {
    presets.push_back({"quorvis.root", root.live() ? "/" : root.directory(), {}});
    presets.push_back({"quorvis.arch", QUORVIS_MACHINE, {}});
    return presets;
}

// Enters the sandbox. False when the evaluation must not continue.
bool confine(const ScanJob& job, const ScanAttempt& attempt, MessageSender& sender) {
    const std::string missing = enterSandbox(job.settings);
    if (missing.empty()) return true;
    const std::string text = "The sandbox is incomplete: " + missing;
    if (!attempt.again) sender.onEvent({EventCode::Sandbox, {}, text, {}, {}});
    if (job.settings.sandbox.required)
        sender.sendText(Kind::Failed, text + " (with Sandbox/required=false the scan continues)");
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

// Ends the process if the evaluation is complete: freeing its data would take a good part of a run.
void evaluate(const ScanJob& job, const ScanAttempt& attempt, MessageSender& sender) {
    HashCache hashes(job.settings.evaluation.cache);
    if (!confine(job, attempt, sender)) return;
    SignatureFile file = readSignatures(job);
    if (!attempt.again) sender.onEvents(std::move(file.events));
    for (std::string& problem : file.problems) sender.sendText(Kind::Refused, std::move(problem));
    if (!file.problems.empty()) return;
    sender.onSignatures(file.signatures.size());

    const Presets presets(withOwnVariables(job.presets, job.root));
    EvaluationContext context(job.root, job.settings, job.start);
    context.budget().publishDeadline(sender.deadline());
    context.tree().showProgress(sender.walk());
    if (!attempt.walks) context.tree().refuseWalks();
    if (!attempt.contentFilters) context.contentFilters().turnOff();
    context.files().useHashCache(hashes);
    Evaluator evaluator(presets, context, sender);
    evaluator.explain(job.options.explain);
    evaluator.evaluate(file.signatures, attempt.start);
    sender.onEvents(hashes.save());
    sender.send({Kind::Done, 0, {}});
    sender.flush();
    leave(0);
}

}  // namespace

void runWorker(const ScanJob& job, const ScanAttempt& attempt, int pipe, WorkerOutput& output) {
    MessageSender sender(pipe, output);
    try {
        evaluate(job, attempt, sender);
        sender.send({Kind::Done, 0, {}});
    } catch (const std::bad_alloc&) {
        leave(1);
    } catch (const std::exception& failure) {
        sender.sendText(Kind::Failed, failure.what());
    }
    sender.flush();
    leave(0);
}

}  // namespace toolkit::quorvis
