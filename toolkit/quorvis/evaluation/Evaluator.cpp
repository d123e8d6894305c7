#include "toolkit/quorvis/evaluation/Evaluator.h"

#include <algorithm>
#include <new>
#include <optional>
#include <unordered_set>
#include <vector>

#include "kest/Ascii.h"
#include "toolkit/quorvis/evaluation/Planner.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxEvidence = 16;
constexpr std::size_t kMaxOutputValueSize = 4096;

// Calls `restore` at the end of its scope, unless keep() was called.
template <class Restore>
class Rollback {
  public:
    explicit Rollback(Restore restore) : restore_(std::move(restore)) {}
    ~Rollback() {
        if (!kept_) restore_();
    }
    Rollback(const Rollback&) = delete;
    Rollback& operator=(const Rollback&) = delete;

    void keep() { kept_ = true; }

  private:
    Restore restore_;
    bool kept_ = false;
};

Truth negated(Truth truth) {
    if (truth == Truth::Unknown) return truth;
    return truth == Truth::True ? Truth::False : Truth::True;
}

std::string_view nameOfTruth(Truth truth) {
    if (truth == Truth::Unknown) return "unknown";
    return truth == Truth::True ? "true" : "false";
}

// At most the first `limit` bytes, without a partial character at the end.
std::string_view cut(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text;
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0U) == 0x80U) --limit;
    return text.substr(0, limit);
}

std::string evidenceKind(LeafKind kind) {
    std::string name(nameOf(kind));
    name.front() = static_cast<char>(name.front() - 'A' + 'a');
    return name;
}

std::string valueOf(const Item& item, std::string_view name) {
    const std::string* const value = item.find(name);
    return value == nullptr ? std::string() : *value;
}

std::string_view labelOf(const Leaf& leaf) {
    return leaf.id.empty() ? nameOf(leaf.kind) : leaf.id;
}

// The leaf as in a signature, with the values of its variables.
std::string describe(const Query& query, const Leaf& leaf) {
    std::string text(nameOf(leaf.kind));
    for (const LeafAttribute& attribute : leaf.attributes) {
        text.append(" ").append(nameOf(attribute.attribute)).append("=\"");
        text.append(query.get(attribute.attribute)).append("\"");
    }
    return text;
}

std::string keyOf(const Match& match) {
    std::string key = match.name;
    for (const auto& [name, value] : match.variables) {
        key.append(1, '\0').append(name).append(1, '\0').append(value);
    }
    return key;
}

// The evaluation of one signature.
class SignatureEvaluation {
  public:
    // `explained`: whether to explain the results of the conditions.
    SignatureEvaluation(const Signature& signature, const Presets& presets, LeafCache& leaves,
                        const Settings& settings, EvaluationSink& sink, bool explained)
        : signature_(signature),
          leaves_(leaves),
          settings_(settings),
          sink_(sink),
          explained_(explained),
          scope_(presets, signature) {}

    // Evaluates a Detection and reports its matches. `replayed`: they were reported before.
    void run(const Detection& detection, bool replayed);
    // A Detection could not be evaluated.
    void leaveOut() { unknown_ = true; }
    // Reports whether the signature as a whole is unknown.
    void finish();

  private:
    // These return whether the Detection found something.
    Truth runOnce();
    Truth runEach(const Leaf& each);
    // True when there is no condition.
    Truth evaluateMatch();
    Truth evaluate(const Condition& condition);
    Truth evaluateAll(const std::vector<Condition>& conditions);
    Truth evaluateAny(const std::vector<Condition>& conditions);
    Truth evaluateLeaf(const Leaf& leaf);
    // Null when a variable of the leaf has no value, which is reported.
    const LeafResult* lookUp(const Leaf& leaf);
    void forgetLeaves();
    // Forgets the bindings and evidence of an item.
    void clear();
    void use(const Leaf& leaf, const Item& item);

    void addMatch();
    void addVariable(const OutputVariable& variable, Match& match);

    void reportEvents(const Leaf& leaf, const LeafResult& result);
    void report(EventCode code, std::string text, std::string_view leaf = {});
    void explain(std::string text, Truth truth);

    const Signature& signature_;
    const Detection* detection_ = nullptr;  // the current one
    LeafCache& leaves_;
    const Settings& settings_;
    EvaluationSink& sink_;
    bool explained_;
    bool replayed_ = false;
    bool unknown_ = false;
    unsigned depth_ = 0;  // of the current condition
    Scope scope_;
    std::vector<Evidence> evidence_;
    std::vector<const LeafResult*> reported_;  // whose events have been reported
    std::unordered_set<std::string> outputs_;  // of the matches so far
};

void SignatureEvaluation::run(const Detection& detection, bool replayed) {
    detection_ = &detection;
    replayed_ = replayed;
    depth_ = 0;
    clear();
    if (leaves_.isFull()) forgetLeaves();
    const Truth truth = detection.each ? runEach(signature_.leaves[*detection.each]) : runOnce();
    if (signature_.detections.size() > 1)
        explain("Detection in line " + std::to_string(detection.line), truth);
}

void SignatureEvaluation::clear() {
    scope_.rewind(0);
    evidence_.clear();
}

void SignatureEvaluation::forgetLeaves() {
    leaves_.forget();
    reported_.clear();
}

void SignatureEvaluation::finish() {
    replayed_ = false;
    if (unknown_) report(EventCode::Unresolved, "whether the signature matches is unknown");
}

Truth SignatureEvaluation::runOnce() {
    const Truth truth = evaluateMatch();
    if (signature_.detections.size() == 1) explain("signature", truth);
    if (truth == Truth::True) addMatch();
    if (truth == Truth::Unknown) unknown_ = true;
    return truth;
}

Truth SignatureEvaluation::runEach(const Leaf& each) {
    const LeafResult* result = lookUp(each);
    const Truth found = result == nullptr ? Truth::Unknown : truthOf(each, *result);
    if (found == Truth::Unknown) unknown_ = true;
    if (found != Truth::True) return found;
    Truth any = Truth::False;
    LeafResult own;
    for (std::size_t i = 0; i < result->items.size(); ++i) {
        if (leaves_.isFull()) {
            if (result != &own) own = *result;
            result = &own;
            forgetLeaves();
        }
        const Item& item = result->items[i];
        use(each, item);
        const Truth truth = evaluateMatch();
        explain("item " + item.source, truth);
        if (truth == Truth::True) addMatch();
        if (truth == Truth::Unknown) unknown_ = true;
        if (any != Truth::True && truth != Truth::False) any = truth;
        clear();
    }
    return any;
}

Truth SignatureEvaluation::evaluateMatch() {
    return detection_->match ? evaluate(*detection_->match) : Truth::True;
}

Truth SignatureEvaluation::evaluate(const Condition& condition) {
    const std::size_t bound = scope_.mark();
    const std::size_t proved = evidence_.size();
    Rollback rollback([&] {
        scope_.rewind(bound);
        evidence_.resize(proved);
    });
    ++depth_;
    Truth truth = Truth::Unknown;
    switch (condition.kind) {
        case Condition::Kind::Leaf:
            truth = evaluateLeaf(signature_.leaves[condition.leaf]);
            break;
        case Condition::Kind::All:
            truth = evaluateAll(condition.children);
            explain("All", truth);
            break;
        case Condition::Kind::Any:
            truth = evaluateAny(condition.children);
            explain("Any", truth);
            break;
        case Condition::Kind::Not:
            truth = negated(evaluate(condition.children.front()));
            explain("Not", truth);
            --depth_;
            return truth;  // without keep(): a Not binds and proves nothing
        case Condition::Kind::Optional:
            evaluate(condition.children.front());  // keeps its bindings when it is true
            truth = Truth::True;
            break;
    }
    --depth_;
    if (truth == Truth::True) rollback.keep();
    return truth;
}

Truth SignatureEvaluation::evaluateAll(const std::vector<Condition>& conditions) {
    Truth all = Truth::True;
    for (const Condition& condition : conditions) {
        const Truth truth = evaluate(condition);
        if (truth == Truth::False) return truth;
        if (truth == Truth::Unknown) all = truth;
    }
    return all;
}

Truth SignatureEvaluation::evaluateAny(const std::vector<Condition>& conditions) {
    Truth any = Truth::False;
    for (const Condition& condition : conditions) {
        const Truth truth = evaluate(condition);
        if (truth == Truth::True) return truth;
        if (truth == Truth::Unknown) any = truth;
    }
    return any;
}

Truth SignatureEvaluation::evaluateLeaf(const Leaf& leaf) {
    const LeafResult* const result = lookUp(leaf);
    if (result == nullptr) return Truth::Unknown;
    const Truth truth = truthOf(leaf, *result);
    if (truth == Truth::True && !result->items.empty()) use(leaf, result->items.front());
    return truth;
}

const LeafResult* SignatureEvaluation::lookUp(const Leaf& leaf) {
    const LeafResult* const known = leaves_.known(leaf);
    if (known != nullptr && !explained_) {
        reportEvents(leaf, *known);
        return known;
    }
    std::string_view missing;
    const std::optional<Query> query = LeafCache::query(leaf, scope_, missing);
    if (!query) {
        report(EventCode::UndefinedVariable, "the variable \"" + std::string(missing) + "\" has no value",
               labelOf(leaf));
        return nullptr;
    }
    const LeafResult& result = leaves_.result(*query);
    reportEvents(leaf, result);
    if (explained_) {
        explain(describe(*query, leaf) + ", items found: " + std::to_string(result.items.size()),
                truthOf(leaf, result));
    }
    return &result;
}

void SignatureEvaluation::use(const Leaf& leaf, const Item& item) {
    if (!leaf.id.empty()) scope_.bind(leaf.id, item);
    if (!settings_.evaluation.evidence || leaf.kind == LeafKind::Compare) return;
    evidence_.push_back(
        {evidenceKind(leaf.kind), item.source, valueOf(item, "name"), valueOf(item, "version")});
}

void SignatureEvaluation::addMatch() {
    Match match;
    match.guid = signature_.guid;
    match.metadata = signature_.metadata;
    std::string_view missing;
    std::optional<std::string> name = expand(signature_.name, scope_, Quoting::None, missing);
    if (!name) {
        report(EventCode::UndefinedVariable,
               "the variable \"" + std::string(missing) + "\" in the signature's name has no value");
        name = signature_.name.source();
    }
    match.name = cut(*name, kMaxOutputValueSize);
    for (const OutputVariable& variable : detection_->output) addVariable(variable, match);
    if (!outputs_.insert(keyOf(match)).second || replayed_) return;
    evidence_.resize(std::min(evidence_.size(), kMaxEvidence));
    match.evidence = evidence_;
    sink_.onMatch(match);
}

void SignatureEvaluation::addVariable(const OutputVariable& variable, Match& match) {
    std::string_view missing;
    std::optional<std::string> value = expand(variable.value, scope_, Quoting::None, missing);
    if (!value) {
        // A leaf that need not be true may have found nothing. That is not an error.
        if (scope_.isOfLeaf(missing)) return;
        report(EventCode::UndefinedVariable, "the variable \"" + std::string(missing) +
                                                 "\" of the output value \"" + std::string(variable.name) +
                                                 "\" has no value");
        return;
    }
    if (value->size() > kMaxOutputValueSize) {
        report(EventCode::LimitBytes, "the output value \"" + std::string(variable.name) +
                                          "\" was cut after " + std::to_string(kMaxOutputValueSize) +
                                          " bytes");
        *value = cut(*value, kMaxOutputValueSize);
    }
    match.variables.emplace_back(variable.name, std::move(*value));
}

void SignatureEvaluation::reportEvents(const Leaf& leaf, const LeafResult& result) {
    if (result.events.empty() || replayed_) return;
    if (std::find(reported_.begin(), reported_.end(), &result) != reported_.end()) return;
    reported_.push_back(&result);
    for (Event event : result.events) {
        event.guid = signature_.guid;
        event.leaf = labelOf(leaf);
        sink_.onEvent(std::move(event));
    }
}

void SignatureEvaluation::report(EventCode code, std::string text, std::string_view leaf) {
    if (replayed_) return;
    sink_.onEvent({code, {}, std::move(text), std::string(signature_.guid), std::string(leaf)});
}

void SignatureEvaluation::explain(std::string text, Truth truth) {
    if (!explained_ || replayed_) return;
    sink_.onExplanation(std::string(2 * std::size_t{depth_}, ' ') + std::move(text) + ": " +
                        std::string(nameOfTruth(truth)));
}

}  // namespace

void Evaluator::evaluate(std::span<const Signature> signatures, const EvaluationStart& start) {
    leaves_.expect(signatures);
    plan(signatures.subspan(start.signature));
    for (std::size_t i = start.signature; i < signatures.size(); ++i) {
        if (context_.budget().expired()) {
            sink_.onEvent({EventCode::Deadline,
                           {},
                           "the time limit was reached: " + std::to_string(signatures.size() - i) +
                               " signatures were not evaluated",
                           {},
                           {}});
            return;
        }
        sink_.onBegin(i, signatures[i].guid);
        evaluateOne(signatures[i],
                    i == start.signature ? std::span(start.aborted) : std::span<const std::size_t>());
    }
}

// Without a plan the same results take longer.
void Evaluator::plan(std::span<const Signature> signatures) {
    try {
        Planner(presets_, leaves_, context_).plan(signatures);
    } catch (const std::bad_alloc&) {
        leaves_.forget();
        context_.releaseMemory();
    }
}

void Evaluator::evaluateOne(const Signature& signature, std::span<const std::size_t> aborted) {
    const bool explained = !explained_.empty() && kest::equalsIgnoringCase(explained_, signature.guid);
    SignatureEvaluation evaluation(signature, presets_, leaves_, context_.settings(), sink_, explained);
    const std::size_t fresh = aborted.empty() ? 0 : std::ranges::max(aborted) + 1;
    const std::size_t count = signature.detections.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (std::ranges::find(aborted, i) != aborted.end()) {
            evaluation.leaveOut();
            continue;
        }
        sink_.onDetection(i, i + 1 == count);
        try {
            evaluation.run(signature.detections[i], i < fresh);
        } catch (const std::bad_alloc&) {
            leaves_.forget();
            context_.releaseMemory();
            sink_.onEvent({EventCode::LimitMemory,
                           {},
                           "takes more memory than is allowed",
                           std::string(signature.guid),
                           {}});
            evaluation.leaveOut();
        }
    }
    evaluation.finish();
}

}  // namespace toolkit::quorvis
