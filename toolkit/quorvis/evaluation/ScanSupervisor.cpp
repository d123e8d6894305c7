#include "toolkit/quorvis/evaluation/ScanSupervisor.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <utility>

#include "toolkit/machine/sandbox/WorkerProcess.h"
#include "toolkit/quorvis/evaluation/ScanMessage.h"
#include "toolkit/quorvis/report/Documents.h"

namespace toolkit::quorvis {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kGrace{500};          // after a deadline, for the child to notice it itself
constexpr milliseconds kCheckInterval{100};  // for the deadline that the child shows
constexpr unsigned kMaxAttempts = 16;
constexpr std::size_t kMaxExplanationBytes = std::size_t{16} << 20;

class Supervisor {
  public:
    Supervisor(const ScanJob& job, EventList& events)
        : job_(job), events_(events), end_(job.start + job.settings.evaluation.timeLimit + kGrace) {}

    ScanResult run() {
        for (unsigned i = 0; i < kMaxAttempts; ++i) {
            const std::string reason = tryOnce();
            if (reason.empty() || !prepareNext(reason)) return std::move(result_);
        }
        giveUp(EventCode::Aborted, "the evaluation was interrupted too often");
        return std::move(result_);
    }

  private:
    // Returns why this attempt ended early; empty when it evaluated all signatures.
    std::string tryOnce() {
        const auto output = makeSharedOutput();
        WorkerProcess worker([&](int pipe) { runWorker(job_, attempt_, pipe, *output); });
        reader_ = {};
        done_ = false;
        std::string reason;
        bool open = true;
        while (open && !done_ && reason.empty()) {
            const Clock::time_point now = Clock::now();
            late_ = now >= end_;
            if (late_ || output->deadline.isLateBy(kGrace)) {
                reason = "it took too long";
                worker.kill();
            } else if (worker.waitForInput(std::min(now + kCheckInterval, end_))) {
                open = take(worker.receive());
            }
            sayProgress(*output);
        }
        if (reason.empty()) reason = worker.join();
        take(worker.drain());
        take(bytesLeftIn(*output, worker.received()));
        begun_ = output->begun;
        guid_ = output->guid.data();
        detection_ = output->detection;
        lastDetection_ = output->lastDetection;
        return done_ ? std::string() : reason;
    }

    // Prints a line for each further hundredth of the scan. The walk and the evaluation each count as half of it.
    void sayProgress(const WorkerOutput& output) {
        if (!job_.settings.evaluation.progress || output.count == 0 || !result_.failure.empty()) return;
        const std::size_t items = output.items;
        const std::size_t evaluated = std::min<std::size_t>(output.itemsDone, items);
        const double walked = items == 0 ? output.walk.done() : 1;
        const double rest = items == 0 ? 0 : static_cast<double>(evaluated) / static_cast<double>(items);
        const int percent = done_ ? 100 : std::min(static_cast<int>(50 * walked + 50 * rest), 99);
        if (percent <= saidPercent_) return;
        saidPercent_ = percent;
        std::printf("progress: %d percent\n", percent);
        std::fflush(stdout);
    }

    // Takes the messages in these bytes. False when the child has closed the pipe or sent something else.
    bool take(std::string_view bytes) {
        reader_.add(bytes);
        for (ScanMessage message;;) {
            switch (reader_.next(message)) {
                case ScanMessageReader::Next::Message:
                    take(std::move(message));
                    break;
                case ScanMessageReader::Next::Incomplete:
                    return !bytes.empty();
                case ScanMessageReader::Next::Broken:
                    return false;
            }
        }
    }

    void take(ScanMessage message) {
        switch (message.kind) {
            case ScanMessage::Kind::Signatures:
                result_.signatureCount = message.number;
                read_ = true;
                break;
            case ScanMessage::Kind::Match:
                takeMatch(message.texts.front());
                break;
            case ScanMessage::Kind::Event:
                events_.add(eventOf(std::move(message)));
                break;
            case ScanMessage::Kind::Explanation:
                takeExplanation(std::move(message.texts.front()));
                break;
            case ScanMessage::Kind::Refused:
                result_.problems.push_back(std::move(message.texts.front()));
                break;
            case ScanMessage::Kind::Failed:
                result_.failure = std::move(message.texts.front());
                done_ = true;
                break;
            case ScanMessage::Kind::Done:
                done_ = true;
                break;
        }
    }

    void takeMatch(const std::string& element) {
        if (limit_.admit(element)) {
            result_.matches.add(element);
            ++result_.matchCount;
        } else if (!std::exchange(full_, true)) {
            events_.add({EventCode::LimitBytes, {}, "the output is full: matches were left out", {}, {}});
        }
    }

    void takeExplanation(std::string line) {
        if (explained_ > kMaxExplanationBytes) return;
        explained_ += line.size() + 1;
        result_.explanation.push_back(explained_ > kMaxExplanationBytes ? "..." : std::move(line));
    }

    // Prepares another attempt after this one ended for this reason. False when none makes sense.
    bool prepareNext(const std::string& reason) {
        if (!read_) {
            result_.problems.push_back(job_.options.signatures + ": cannot be read: " + reason);
            return false;
        }
        if (late_) {
            giveUp(EventCode::Deadline, "the time limit was reached");
            return false;
        }
        attempt_.contentFilters = false;
        attempt_.again = true;
        if (begun_ <= attempt_.start.signature) return prepareWithoutWalk(reason);
        const std::string text =
            "whether the signature matches is unknown: its evaluation was ended: " + reason;
        events_.add({EventCode::Aborted, {}, text, guid_, {}});
        if (lastDetection_) return prepareNextSignature();
        if (begun_ - 1 != attempt_.start.signature) attempt_.start = {begun_ - 1, {}};
        attempt_.start.aborted.push_back(detection_);
        return true;
    }

    bool prepareNextSignature() {
        Event event{EventCode::Unresolved, {}, "whether the signature matches is unknown", guid_, {}};
        event.because = nameOf(EventCode::Aborted);
        events_.add(std::move(event));
        attempt_.start = {begun_, {}};
        return begun_ < result_.signatureCount;
    }

    // For an attempt that ended while it prepared the evaluation of all signatures.
    bool prepareWithoutWalk(const std::string& reason) {
        if (attempt_.walks) {
            attempt_.walks = false;
            events_.add({EventCode::Aborted,
                         {},
                         "no directories are walked, because a walk was ended: " + reason,
                         {},
                         {}});
            return true;
        }
        giveUp(EventCode::Aborted, "the evaluation was ended (" + reason + ")");
        return false;
    }

    void giveUp(EventCode code, const std::string& reason) {
        const std::size_t finished = std::max(begun_, attempt_.start.signature + 1) - 1;
        const std::size_t left = result_.signatureCount - std::min(finished, result_.signatureCount);
        events_.add(
            {code, {}, reason + ": " + std::to_string(left) + " signatures were not evaluated", {}, {}});
    }

    const ScanJob& job_;
    EventList& events_;
    Clock::time_point end_;
    ScanResult result_;
    ScanAttempt attempt_;
    ScanMessageReader reader_;
    OutputLimit limit_;
    bool full_ = false;
    std::size_t explained_ = 0;
    int saidPercent_ = 0;
    // Of the latest attempt.
    bool read_ = false;  // whether it has read the signatures
    bool done_ = false;
    bool late_ = false;
    std::size_t begun_ = 0;
    std::string guid_;
    std::size_t detection_ = 0;
    bool lastDetection_ = true;
};

}  // namespace

ScanResult superviseScan(const ScanJob& job, EventList& events) {
    return Supervisor(job, events).run();
}

}  // namespace toolkit::quorvis
