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

    void run();

  private:
    void runEach(const Leaf& each);
    // True when there is no condition.
    Truth evaluateMatch();
    Truth evaluate(const Condition& condition);
    Truth evaluateAll(const std::vector<Condition>& conditions);
    Truth evaluateAny(const std::vector<Condition>& conditions);
    Truth evaluateLeaf(const Leaf& leaf);
    // Null when a variable of the leaf has no value, which is reported.
    const LeafResult* lookUp(const Leaf& leaf);
    void use(const Leaf& leaf, const Item& item);

    void addMatch();
    void addVariable(const OutputVariable& variable, Match& match);

    void reportEvents(const Leaf& leaf, const LeafResult& result);
    void report(EventCode code, std::string text, std::string_view leaf = {});
    void explain(std::string text, Truth truth);

    const Signature& signature_;
    LeafCache& leaves_;
    const Settings& settings_;
    EvaluationSink& sink_;
    bool explained_;
    unsigned depth_ = 0;  // of the current condition
    Scope scope_;
    std::vector<Evidence> evidence_;
    std::vector<const LeafResult*> reported_;  // whose events have been reported
    std::unordered_set<std::string> outputs_;  // of the matches so far
};

void SignatureEvaluation::run() {
    if (signature_.each) {
        runEach(signature_.leaves[*signature_.each]);
        return;
    }
    const Truth truth = evaluateMatch();
    explain("signature", truth);
    if (truth == Truth::True) addMatch();
    if (truth == Truth::Unknown) report(EventCode::Unresolved, "whether the signature matches is unknown");
}

void SignatureEvaluation::runEach(const Leaf& each) {
    const LeafResult* result = lookUp(each);
    const Truth found = result == nullptr ? Truth::Unknown : truthOf(each, *result);
    bool unknown = found == Truth::Unknown;
    if (found == Truth::True) {
        LeafResult own;
        for (std::size_t i = 0; i < result->items.size(); ++i) {
            if (leaves_.isFull()) {
                if (result != &own) own = *result;
                result = &own;
                leaves_.forget();
                reported_.clear();
            }
            const Item& item = result->items[i];
            use(each, item);
            const Truth truth = evaluateMatch();
            explain("item " + item.source, truth);
            if (truth == Truth::True) addMatch();
            if (truth == Truth::Unknown) unknown = true;
            scope_.rewind(0);
            evidence_.clear();
        }
    }
    if (unknown) report(EventCode::Unresolved, "whether the signature matches is unknown");
}

Truth SignatureEvaluation::evaluateMatch() {
    return signature_.match ? evaluate(*signature_.match) : Truth::True;
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
    for (const OutputVariable& variable : signature_.output) addVariable(variable, match);
    if (!outputs_.insert(keyOf(match)).second) return;
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
    if (result.events.empty()) return;
    if (std::find(reported_.begin(), reported_.end(), &result) != reported_.end()) return;
    reported_.push_back(&result);
    for (Event event : result.events) {
        event.guid = signature_.guid;
        event.leaf = labelOf(leaf);
        sink_.onEvent(std::move(event));
    }
}

void SignatureEvaluation::report(EventCode code, std::string text, std::string_view leaf) {
    sink_.onEvent({code, {}, std::move(text), std::string(signature_.guid), std::string(leaf)});
}

void SignatureEvaluation::explain(std::string text, Truth truth) {
    if (!explained_) return;
    sink_.onExplanation(std::string(2 * std::size_t{depth_}, ' ') + std::move(text) + ": " +
                        std::string(nameOfTruth(truth)));
}

}  // namespace

void Evaluator::evaluate(std::span<const Signature> signatures, std::size_t first) {
    leaves_.expect(signatures);
    plan(signatures.subspan(first));
    for (std::size_t i = first; i < signatures.size(); ++i) {
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
        evaluateOne(signatures[i]);
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

void Evaluator::evaluateOne(const Signature& signature) {
    const bool explained = !explained_.empty() && kest::equalsIgnoringCase(explained_, signature.guid);
    if (leaves_.isFull()) leaves_.forget();
    try {
        SignatureEvaluation(signature, presets_, leaves_, context_.settings(), sink_, explained).run();
    } catch (const std::bad_alloc&) {
        leaves_.forget();
        context_.releaseMemory();
        const std::string guid(signature.guid);
        sink_.onEvent({EventCode::LimitMemory, {}, "takes more memory than is allowed", guid, {}});
        sink_.onEvent({EventCode::Unresolved, {}, "whether the signature matches is unknown", guid, {}});
    }
}

}  // namespace toolkit::quorvis
