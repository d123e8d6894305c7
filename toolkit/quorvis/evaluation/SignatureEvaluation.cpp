#include "toolkit/quorvis/evaluation/SignatureEvaluation.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "toolkit/quorvis/evaluation/FoundFiles.h"

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

// Whether a Detection finds packages by themselves.
bool findsPackages(const Signature& signature, const Detection& detection) {
    for (std::size_t i = detection.firstLeaf; i < detection.endLeaf; ++i) {
        if (signature.leaves[i].kind == LeafKind::Package) return true;
    }
    return false;
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
    for (const Capture& capture : leaf.captures) {
        if (!capture.of.empty())
            text.append(" ").append(capture.of).append("~\"").append(capture.regex).append("\"");
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

}  // namespace

void SignatureEvaluation::run(const Detection& detection, bool replayed) {
    detection_ = &detection;
    findsPackagesToo_ = std::ranges::any_of(signature_.detections, [&](const Detection& later) {
        return &later > &detection && findsPackages(signature_, later);
    });
    replayed_ = replayed;
    depth_ = 0;
    clear();
    if (leaves_.isFull()) forgetLeaves();
    const Truth truth = detection.each.empty() ? runOnce() : runEach(0);
    if (signature_.detections.size() > 1)
        explain("Detection in line " + std::to_string(detection.line), truth);
}

void SignatureEvaluation::clear() {
    scope_.rewind(0);
    proofs_.clear();
    copies_.clear();
    eachResults_.clear();
}

void SignatureEvaluation::forgetLeaves() {
    for (EachResult& result : eachResults_) {
        if (result.cached != nullptr) result.own = *std::exchange(result.cached, nullptr);
    }
    leaves_.forget();
    reported_.clear();
}

void SignatureEvaluation::finish() {
    replayed_ = false;
    if (unknown_) return reportUnresolved("whether the signature matches is unknown", false);
    if (unknownFiles_) reportUnresolved("whether the signature matches some of the files is unknown", true);
}

void SignatureEvaluation::reportUnresolved(std::string text, bool ofFile) {
    Event event{EventCode::Unresolved, {}, std::move(text), std::string(signature_.guid), {}, ofFile};
    event.because = doubts_.names();
    sink_.onEvent(std::move(event));
}

Truth SignatureEvaluation::runOnce() {
    doubt_ = {};
    const Truth truth = evaluateMatch();
    if (signature_.detections.size() == 1) explain("signature", truth);
    if (truth == Truth::True) addMatch();
    if (truth == Truth::Unknown) noteUnknown(false);
    return truth;
}

Truth SignatureEvaluation::runEach(std::size_t level) {
    if (level == detection_->each.size()) {
        onlyFilesUnknown_ = true;
        doubt_ = {};
        const Truth truth = evaluateMatch();
        if (truth == Truth::True) addMatch();
        if (truth == Truth::Unknown) noteUnknown(onlyFilesUnknown_);
        return truth;
    }
    const Leaf& each = signature_.leaves[detection_->each[level]];
    const LeafResult* const result = lookUp(each);
    const Truth found = result == nullptr ? Truth::Unknown : truthOf(each, *result);
    if (found == Truth::Unknown) {
        doubt_ = {};
        noteDoubt(result);
        noteUnknown(result != nullptr && isOfFiles(each, *result));
    }
    if (found != Truth::True) return found;
    eachResults_.push_back({result, {}});
    const Truth any = runItems(level);
    eachResults_.pop_back();
    return any;
}

Truth SignatureEvaluation::runItems(std::size_t level) {
    const Leaf& each = signature_.leaves[detection_->each[level]];
    const bool last = level + 1 == detection_->each.size();
    Truth any = Truth::False;
    for (std::size_t i = 0; i < eachResults_[level].get().items.size(); ++i) {
        if (leaves_.isFull()) forgetLeaves();
        const Item& item = eachResults_[level].get().items[i];
        if (level == 0) sink_.onItem();
        if (each.kind == LeafKind::Package && owners_.hold(item)) {
            explain("item " + valueOf(item, "purl") + " owns a file of an earlier match");
            continue;
        }
        const std::size_t bound = scope_.mark();
        const std::size_t proved = proofs_.size();
        const std::size_t copied = copies_.size();
        const Item& used = use(each, item, !last);
        if (!last) ++depth_;
        const Truth truth = runEach(level + 1);
        if (!last) --depth_;
        explain("item " + used.source, truth);
        if (any != Truth::True && truth != Truth::False) any = truth;
        scope_.rewind(bound);
        proofs_.resize(proved);
        copies_.resize(copied);
    }
    return any;
}

Truth SignatureEvaluation::evaluateMatch() {
    return detection_->match ? evaluate(*detection_->match) : Truth::True;
}

Truth SignatureEvaluation::evaluate(const Condition& condition) {
    const std::size_t bound = scope_.mark();
    const std::size_t proved = proofs_.size();
    Rollback rollback([&] {
        scope_.rewind(bound);
        proofs_.resize(proved);
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
    const Truth truth = result == nullptr ? Truth::Unknown : truthOf(leaf, *result);
    if (truth == Truth::Unknown) noteDoubt(result);
    if (result == nullptr) onlyFilesUnknown_ = false;
    if (result == nullptr) return truth;
    if (truth == Truth::Unknown && !isOfFiles(leaf, *result)) onlyFilesUnknown_ = false;
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

std::vector<Evidence> SignatureEvaluation::evidenceOf(const std::vector<Proof>& proofs) {
    std::vector<Evidence> evidence;
    for (const Proof& proof : proofs) {
        if (evidence.size() == kMaxEvidence) break;
        const Item& item = *proof.item;
        evidence.push_back(
            {evidenceKind(proof.leaf->kind), item.source, valueOf(item, "name"), valueOf(item, "version")});
    }
    return evidence;
}

const Item& SignatureEvaluation::use(const Leaf& leaf, const Item& item, bool copied) {
    const Item* used = &item;
    if (copied || leaf.ownerAsked) {
        Item& copy = copies_.emplace_back(item);
        if (leaf.ownerAsked) {
            owners_.describe(leaf, copy);
            reportOwnerEvents();
        }
        used = &copy;
    }
    if (!leaf.id.empty()) scope_.bind(leaf.id, *used);
    if (leaf.kind != LeafKind::Compare) proofs_.push_back({&leaf, used});
    return *used;
}

void SignatureEvaluation::reportOwnerEvents() {
    for (Event& event : context_.owners().takeEvents()) {
        event.guid = signature_.guid;
        sink_.onEvent(std::move(event));
    }
}

bool SignatureEvaluation::restsOnPackagesOfEarlierMatches() {
    return detection_->each.empty() && !proofs_.empty() &&
           std::ranges::all_of(proofs_, [this](const Proof& proof) {
               return proof.leaf->kind == LeafKind::Package && owners_.hold(*proof.item);
           });
}

bool SignatureEvaluation::isInstalledTwice(const Match& match) {
    Installations::Part part{match.name, {}, {}};
    for (const auto& [name, value] : match.variables) {
        if (name == "version") part.version = value;
        if (name == "package") part.owned = !value.empty();
    }
    for (const Proof& proof : proofs_) {
        if (part.path.empty()) part.path = fileOf(*proof.leaf, *proof.item);
    }
    return !installations_.add(part);
}

// The file of a match is the first item of Each, or else any file that a leaf of the match found.
void SignatureEvaluation::noteFiles() {
    for (const Proof& proof : proofs_) {
        owners_.note(*proof.leaf, *proof.item);
        if (!detection_->each.empty()) break;
    }
    reportOwnerEvents();
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
    if (restsOnPackagesOfEarlierMatches()) return explain("the package owns a file of an earlier match");
    if (findsPackagesToo_) noteFiles();
    if (!outputs_.insert(keyOf(match)).second) return;
    if (signature_.oncePerInstallation && isInstalledTwice(match))
        return explain("an earlier match is of the same installation");
    if (replayed_) return;
    for (const Identity& identity : signature_.identities) addIdentity(identity, match);
    if (context_.settings().evaluation.evidence) match.evidence = evidenceOf(proofs_);
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
        report(EventCode::LimitBytes,
               "the output value \"" + std::string(variable.name) + "\" was cut after " +
                   std::to_string(kMaxOutputValueSize) + " bytes",
               {}, !detection_->each.empty());
        *value = cut(*value, kMaxOutputValueSize);
    }
    match.variables.emplace_back(variable.name, std::move(*value));
}

// The variables of an identity are first those of the output.
void SignatureEvaluation::addIdentity(const Identity& identity, Match& match) {
    const auto valueOf = [&](std::string_view name) -> std::optional<std::string_view> {
        for (const auto& [variable, value] : match.variables) {
            if (variable == name) return value;
        }
        return scope_.find(name);
    };
    std::optional<std::string> text = filled(identity, valueOf);
    if (text && text->size() <= kMaxOutputValueSize)
        match.identities.emplace_back(nameOf(identity.kind), std::move(*text));
}

void SignatureEvaluation::reportEvents(const Leaf& leaf, const LeafResult& result) {
    for (Event& place : context_.tree().takePrivatePlaces()) sink_.onEvent(std::move(place));
    if (result.events.empty() || replayed_) return;
    if (std::find(reported_.begin(), reported_.end(), &result) != reported_.end()) return;
    reported_.push_back(&result);
    const FoundFiles files(signature_, *detection_);
    const bool expired = context_.budget().expired();
    for (Event event : result.events) {
        if (event.ofWalk) continue;
        event.guid = signature_.guid;
        event.leaf = labelOf(leaf);
        event.ofFile = !expired && files.areCauseOf(leaf, event.code);
        sink_.onEvent(std::move(event));
    }
}

bool SignatureEvaluation::isOfFiles(const Leaf& leaf, const LeafResult& result) const {
    return !context_.budget().expired() && FoundFiles(signature_, *detection_).areCauseOf(leaf, result);
}

void SignatureEvaluation::noteUnknown(bool onlyFiles) {
    (onlyFiles ? unknownFiles_ : unknown_) = true;
    doubts_.add(doubt_);
}

void SignatureEvaluation::noteDoubt(const LeafResult* result) {
    if (result == nullptr) return doubt_.add(EventCode::UndefinedVariable);
    for (const Event& event : result->events) {
        if (event.code != EventCode::Loop) doubt_.add(event.code);
    }
}

void SignatureEvaluation::report(EventCode code, std::string text, std::string_view leaf, bool ofFile) {
    if (replayed_) return;
    sink_.onEvent({code, {}, std::move(text), std::string(signature_.guid), std::string(leaf), ofFile});
}

void SignatureEvaluation::explain(std::string text) {
    if (!explained_ || replayed_) return;
    sink_.onExplanation(std::string(2 * std::size_t{depth_}, ' ') + std::move(text));
}

void SignatureEvaluation::explain(std::string text, Truth truth) {
    explain(std::move(text.append(": ").append(nameOfTruth(truth))));
}

}  // namespace toolkit::quorvis
