// Evaluates signatures on a tree of files that the test creates.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/evaluation/Evaluator.h"
#include "toolkit/quorvis/language/SignatureReader.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// Keeps the results of an evaluation.
struct EvaluationCollector : EvaluationSink {
    explicit EvaluationCollector(EventList& list) : events(list) {}
    void onMatch(const Match& match) override { matches.push_back(match); }
    void onEvent(Event event) override { events.add(std::move(event)); }
    void onExplanation(std::string line) override { explanation.push_back(std::move(line)); }

    EventList& events;
    std::vector<Match> matches;
    std::vector<std::string> explanation;
};

class Evaluation : public testing::Test {
  protected:
    // Adds a package to the tree.
    void install(const std::string& name, const std::string& version,
                 const std::string& status = "installed") {
        status_ += "Package: " + name + "\nStatus: install ok " + status +
                   "\nArchitecture: amd64\nVersion: " + version + "\n\n";
        tree_.write("var/lib/dpkg/status", status_);
    }

    // The matches of these signatures, given without the root element.
    std::vector<Match> evaluate(const std::string& signatures) {
        const std::string path =
            files_.write("signatures.xml", "<Signatures>" + signatures + "</Signatures>").string();
        read_ = readSignatureFile(path, settings_);
        for (const std::string& problem : read_.problems) ADD_FAILURE() << problem;
        root_.emplace(tree_.path().string());
        context_.emplace(*root_, settings_);
        presets_.emplace(given_);
        sink_.matches.clear();
        evaluator_.emplace(*presets_, *context_, sink_);
        evaluator_->explain(explained_);
        evaluator_->evaluate(read_.signatures);
        return sink_.matches;
    }

    // The matches that follow in the signatures of evaluate() when these Detections of the first one were aborted.
    std::vector<Match> resumeAfter(std::vector<std::size_t> aborted) {
        sink_.matches.clear();
        context_.emplace(*root_, settings_);
        evaluator_.emplace(*presets_, *context_, sink_);
        evaluator_->evaluate(read_.signatures, {0, std::move(aborted)});
        return sink_.matches;
    }

    // One signature with this content.
    std::vector<Match> evaluateOne(const std::string& content) {
        return evaluate(R"(<Signature guid="g" name="n">)" + content + "</Signature>");
    }
    bool matches(const std::string& condition) {
        return !evaluateOne("<Match>" + condition + "</Match>").empty();
    }

    // "undefined-variable" and so on, in order.
    std::vector<std::string> eventCodes() const {
        std::vector<std::string> codes;
        for (const EventList::Entry& entry : events_.entries()) codes.emplace_back(nameOf(entry.event.code));
        return codes;
    }

    zavtest::ScratchDir tree_;
    Settings settings_;
    std::vector<PresetValue> given_;
    std::string explained_;
    EventList events_;
    EvaluationCollector sink_{events_};
    std::optional<EvaluationContext> context_;
    std::optional<Evaluator> evaluator_;

  private:
    zavtest::ScratchDir files_;
    std::string status_;
    SignatureFile read_;
    std::optional<Root> root_;
    std::optional<Presets> presets_;
};

using Variables = std::vector<std::pair<std::string, std::string>>;

}  // namespace toolkit::quorvis
