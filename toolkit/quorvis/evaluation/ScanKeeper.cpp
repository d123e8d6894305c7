#include "toolkit/quorvis/evaluation/ScanKeeper.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>

#include "toolkit/quorvis/evaluation/ScanMessage.h"
#include "toolkit/quorvis/evaluation/WorkerProcess.h"
#include "toolkit/quorvis/report/Documents.h"

namespace toolkit::quorvis {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kGrace{500};      // for who looks at the clock to end by himself
constexpr milliseconds kLookEvery{100};  // at what the child is busy with
constexpr unsigned kMostAttempts = 16;
constexpr std::size_t kMostExplanation = std::size_t{16} << 20;

class Keeper {
  public:
    Keeper(const ScanJob& job, EventList& events)
        : job_(job), events_(events), end_(job.start + job.settings.evaluation.timeLimit + kGrace) {}

    Findings run() {
        for (unsigned i = 0; i < kMostAttempts; ++i) {
            const std::string reason = tryOnce();
            if (reason.empty() || !prepareNext(reason)) return std::move(findings_);
        }
        giveUp(EventCode::Aborted, "the evaluation was interrupted too often");
        return std::move(findings_);
    }

  private:
    // Why this attempt ended before all was evaluated; empty when all was.
    std::string tryOnce() {
        WorkerProcess worker([&](int pipe, ScanTail& tail) { workOn(job_, attempt_, pipe, tail); });
        reader_ = {};
        done_ = false;
        std::string reason;
        bool open = true;
        while (open && !done_ && reason.empty()) {
            const Clock::time_point now = Clock::now();
            late_ = now >= end_;
            if (late_ || worker.tail().deadline.isLateBy(kGrace)) {
                reason = "it took too long";
                worker.kill();
            } else if (worker.waitForInput(std::min(Clock::duration(kLookEvery), end_ - now))) {
                open = take(worker.receive());
            }
        }
        if (reason.empty()) reason = worker.join();
        take(worker.rest());
        begun_ = worker.tail().begun;
        guid_ = worker.tail().guid.data();
        return done_ ? std::string() : reason;
    }

    // False at the end of the child.
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
                findings_.signatureCount = message.number;
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
                findings_.problems.push_back(std::move(message.texts.front()));
                break;
            case ScanMessage::Kind::Failed:
                findings_.failure = std::move(message.texts.front());
                done_ = true;
                break;
            case ScanMessage::Kind::Done:
                done_ = true;
                break;
        }
    }

    void takeMatch(const std::string& element) {
        if (limit_.admit(element)) {
            findings_.matches += element;
            ++findings_.matchCount;
        } else if (!std::exchange(full_, true)) {
            events_.add({EventCode::LimitBytes, {}, "the output is full: matches were left out", {}, {}});
        }
    }

    void takeExplanation(std::string line) {
        if (explained_ > kMostExplanation) return;
        explained_ += line.size() + 1;
        findings_.explanation.push_back(explained_ > kMostExplanation ? "..." : std::move(line));
    }

    // Whether another attempt makes sense, after this one ended for that reason.
    bool prepareNext(const std::string& reason) {
        if (!read_) {
            findings_.problems.push_back(job_.options.signatures + ": cannot be read: " + reason);
            return false;
        }
        if (late_) {
            giveUp(EventCode::Deadline, "the time limit was reached");
            return false;
        }
        attempt_.together = false;
        if (begun_ <= attempt_.first) return prepareWithoutWalk(reason);
        const std::string text =
            "whether the signature matches is unknown: its evaluation was ended, for " + reason;
        events_.add({EventCode::Aborted, {}, text, guid_, {}});
        events_.add({EventCode::Unresolved, {}, "whether the signature matches is unknown", guid_, {}});
        attempt_.first = begun_;
        return attempt_.first < findings_.signatureCount;
    }

    // What was planned for all signatures did not end.
    bool prepareWithoutWalk(const std::string& reason) {
        if (attempt_.walks) {
            attempt_.walks = false;
            events_.add({EventCode::Aborted,
                         {},
                         "no directories are walked: a walk was ended, for " + reason,
                         {},
                         {}});
            return true;
        }
        giveUp(EventCode::Aborted, "the evaluation was ended, for " + reason);
        return false;
    }

    void giveUp(EventCode code, const std::string& reason) {
        const std::size_t finished = std::max(begun_, attempt_.first + 1) - 1;
        const std::size_t left = findings_.signatureCount - std::min(finished, findings_.signatureCount);
        events_.add(
            {code, {}, reason + ": " + std::to_string(left) + " signatures were not evaluated", {}, {}});
    }

    const ScanJob& job_;
    EventList& events_;
    Clock::time_point end_;
    Findings findings_;
    ScanAttempt attempt_;
    ScanMessageReader reader_;
    OutputLimit limit_;
    bool full_ = false;
    std::size_t explained_ = 0;
    // Of the latest attempt.
    bool read_ = false;  // whether the signatures were
    bool done_ = false;
    bool late_ = false;
    std::size_t begun_ = 0;
    std::string guid_;
};

}  // namespace

Findings keepScan(const ScanJob& job, EventList& events) {
    return Keeper(job, events).run();
}

}  // namespace toolkit::quorvis
