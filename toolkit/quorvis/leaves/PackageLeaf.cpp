#include <re2/re2.h>

#include "toolkit/quorvis/leaves/ValueTests.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {
namespace {

using Row = PackageIndex::Row;

// The default scheme for versions of this type. apk and pacman order versions much as rpm does, but with the rpm scheme
// "1.0_rc1" and "1.0rc1" are newer than "1.0".
Scheme defaultScheme(PackageType type) {
    switch (type) {
        case PackageType::Dpkg:
        case PackageType::Opkg:
            return Scheme::Deb;
        case PackageType::Rpm:
        case PackageType::Apk:
        case PackageType::Pacman:
            return Scheme::Rpm;
        case PackageType::Snap:
        case PackageType::Flatpak:
        case PackageType::Portage:
        case PackageType::Homebrew:
            break;
    }
    return Scheme::Dotted;
}

Item itemOf(const Row& row, EvaluationContext& context) {
    Item item;
    item.fields.reserve(9);
    const auto set = [&item](std::string_view name, std::string_view value) {
        item.set(name, std::string(value));
    };
    set("name", row.name);
    set("version", row.version);
    set("upstream", row.upstream);
    set("epoch", row.epoch);
    set("release", row.release);
    set("arch", row.architecture);
    set("source", row.source);
    set("type", nameOf(row.type));
    item.set("purl", context.packages().purl(row));
    item.source = row.database;
    return item;
}

class PackageLookUp {
  public:
    PackageLookUp(const Query& query, EvaluationContext& context) : query_(query), context_(context) {}

    LeafResult result() {
        if (readType() && readCompare()) search();
        return std::move(result_);
    }

  private:
    bool readType() {
        const std::string_view type = query_.get(Attribute::Type);
        if (type.empty() || type == "any") return true;
        type_ = packageTypeNamed(type);
        if (!type_) refuse("no type of packages: ", type);
        return type_.has_value();
    }

    bool readCompare() {
        const std::string_view compare = query_.get(Attribute::Compare);
        upstreamOnly_ = compare == "upstream";
        if (!compare.empty() && !upstreamOnly_) refuse("nothing to compare: ", compare);
        return compare.empty() || upstreamOnly_;
    }

    void refuse(std::string_view problem, std::string_view value) {
        result_.fail(EventCode::Unsupported, {}, std::string(problem).append(value));
    }

    void search() {
        PackageIndex& packages = context_.packages();
        if (query_.has(Attribute::Name)) {
            for (const Row& row : packages.named(query_.get(Attribute::Name))) test(row);
        } else if (!searchNames(query_.get(Attribute::NameRegex))) {
            return;
        }
        if (packages.takeDamage(type_, result_.events)) result_.incomplete = true;
    }

    // False when the regex is invalid.
    bool searchNames(std::string_view pattern) {
        PackageIndex& packages = context_.packages();
        if (const auto* const rows = packages.announced(pattern)) {
            for (const Row* const row : *rows) test(*row);
            return true;
        }
        std::string problem;
        const RE2* const regex = compileRegex(pattern, {}, problem);
        if (regex == nullptr) {
            refuse("wrong expression: ", problem);
            return false;
        }
        for (const Row* const row : packages.matching(*regex)) test(*row);
        return true;
    }

    void test(const Row& row) {
        context_.budget().checkTimeOccasionally();
        if (type_ && row.type != *type_) return;
        if (!isOrAny(query_, Attribute::Arch, row.architecture)) return;
        if (!isOrAny(query_, Attribute::Source, row.source)) return;
        const std::string_view version = upstreamOnly_ ? row.upstream : row.version;
        if (!passesVersionTests(query_, defaultScheme(row.type), version, std::string(row.database), result_))
            return;
        keepItem(context_.budget(), result_, itemOf(row, context_));
    }

    const Query& query_;
    EvaluationContext& context_;
    LeafResult result_;
    std::optional<PackageType> type_;  // none for any
    bool upstreamOnly_ = false;
};

}  // namespace

LeafResult lookUpPackage(const Query& query, EvaluationContext& context) {
    return PackageLookUp(query, context).result();
}

}  // namespace toolkit::quorvis
