#include "toolkit/quorvis/evaluation/OwningPackages.h"

#include <algorithm>
#include <utility>

namespace toolkit::quorvis {

std::string valueOf(const Item& item, std::string_view name) {
    const std::string* const value = item.find(name);
    return value == nullptr ? std::string() : *value;
}

std::string fileOf(const Leaf& leaf, const Item& item) {
    if (leaf.kind == LeafKind::Process) return valueOf(item, "exe");
    return findsFiles(leaf.kind) ? item.source : std::string();
}

// The package that owns the file at this path, or else the link there. `linkFree`: whether the path has no links.
const PackageIndex::Row* OwningPackages::ownerOf(const std::string& path, bool linkFree) {
    if (linkFree) return context_.owners().ownerOf(path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return nullptr;
    const PackageIndex::Row* const owner = context_.owners().ownerOf(context_.files().withoutLinks(path));
    if (owner != nullptr) return owner;
    const std::string directory =
        slash == 0 ? std::string() : context_.files().withoutLinks(path.substr(0, slash));
    return context_.owners().ownerOf(directory + path.substr(slash));
}

void OwningPackages::describe(const Leaf& leaf, Item& item) {
    const PackageIndex::Row* const owner = ownerOf(fileOf(leaf, item), item.linkFree);
    if (owner == nullptr && context_.owners().incomplete()) return;
    const auto set = [&item](std::string_view name, std::string value) {
        if (item.find(name) == nullptr) item.set(name, std::move(value));
    };
    set("package", owner == nullptr ? std::string() : context_.packages().purl(*owner));
    set("packageName", owner == nullptr ? std::string() : std::string(owner->name));
    set("packageUpstream", owner == nullptr ? std::string() : std::string(owner->upstream));
}

void OwningPackages::note(const Leaf& leaf, const Item& item) {
    const PackageIndex::Row* const owner = ownerOf(fileOf(leaf, item), item.linkFree);
    if (owner != nullptr && std::ranges::find(noted_, owner) == noted_.end()) noted_.push_back(owner);
}

bool OwningPackages::hold(const Item& package) {
    if (noted_.empty()) return false;
    const std::string purl = valueOf(package, "purl");
    return std::ranges::any_of(noted_, [&](const PackageIndex::Row* owner) {
        // Packages of one source and version are parts of one product.
        const bool sameSource = !owner->source.empty() && owner->source == valueOf(package, "source") &&
                                owner->version == valueOf(package, "version") &&
                                nameOf(owner->type) == valueOf(package, "type");
        return sameSource || context_.packages().purl(*owner) == purl;
    });
}

}  // namespace toolkit::quorvis
