#include "cli/diff/InventoryDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/diff/InstancePairs.h"
#include "schema/Catalogue.h"

namespace zavcli {

namespace {

std::vector<const Instance*> pointersTo(const std::vector<Instance>& instances) {
    std::vector<const Instance*> pointers;
    pointers.reserve(instances.size());
    for (const Instance& instance : instances) pointers.push_back(&instance);
    return pointers;
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

// A package URL without its version and qualifiers, so that another version of a package is not another package.
// Other texts as they are.
std::string withoutVersion(const std::string& value) {
    if (!value.starts_with("pkg:")) return value;
    const std::size_t end = std::min(value.find('?'), value.size());
    const std::size_t version = std::min(value.rfind('@', end), end);
    return value.substr(0, version) + value.substr(end);
}

// The fields of any instance, in their order.
std::vector<std::string> fieldsOf(const std::vector<Instance>& instances) {
    std::vector<std::string> names;
    for (const Instance& instance : instances) {
        for (std::size_t i = 0; i < instance.size(); ++i) {
            // Nearly all instances have the same fields.
            if (i < names.size() && names[i] == instance[i].name) continue;
            if (std::ranges::find(names, instance[i].name) == names.end()) names.push_back(instance[i].name);
        }
    }
    return names;
}

// What is known of the two scans as a whole.
struct Circumstances {
    bool otherUser = false;     // one scanner ran as root and the other did not
    bool rootIsBefore = false;  // with otherUser: which one
    bool otherPlace = false;    // one inventory is of files below a directory
    bool hashes = false;        // private values cannot be compared
};

class GroupComparison {
  public:
    GroupComparison(const Circumstances& circumstances, const Group& before, const Group& after)
        : circumstances_(circumstances),
          before_(before),
          after_(after),
          definition_(schema::findGroup(before.name)) {
        chooseFields();
        chooseKeys();
    }

    GroupChanges changes() const {
        GroupChanges result{after_.name, {}};
        InstancePairs pairs =
            pairInstances(pointersTo(before_.instances), pointersTo(after_.instances),
                          [this](const Instance& instance) { return keyText(instance, false); });
        InstancePairs versions = pairInstances(
            pairs.removed, pairs.added, [this](const Instance& instance) { return keyText(instance, true); });
        for (const Instance* const instance : versions.removed)
            result.instances.push_back(onlyOne(InstanceChange::Kind::Removed, *instance));
        for (const Instance* const instance : versions.added)
            result.instances.push_back(onlyOne(InstanceChange::Kind::Added, *instance));
        pairs.same.insert(pairs.same.end(), versions.same.begin(), versions.same.end());
        for (const InstancePairs::Pair& pair : pairs.same) {
            InstanceChange change = changed(*pair.before, *pair.after);
            if (!change.values.empty()) result.instances.push_back(std::move(change));
        }
        return result;
    }

    // Fields that one inventory has and the other does not, because its scanner does not know them.
    const std::vector<std::string>& missingFields() const { return missing_; }

  private:
    const schema::Field* definitionOf(const std::string& field) const {
        return definition_ == nullptr ? nullptr : schema::findField(*definition_, field);
    }

    bool isComparable(const std::string& field) const {
        const schema::Field* const definition = definitionOf(field);
        if (definition == nullptr) return true;
        return !definition->isVolatile &&
               !(circumstances_.hashes && definition->privacy != schema::Privacy::Public);
    }

    void chooseFields() {
        const std::vector<std::string> left = fieldsOf(before_.instances);
        const std::vector<std::string> right = fieldsOf(after_.instances);
        const auto has = [](const std::vector<std::string>& names, const std::string& name) {
            return std::ranges::find(names, name) != names.end();
        };
        // A group without instances says nothing about its fields.
        const bool everywhere = left.empty() || right.empty();
        for (const std::string& name : right) {
            if (!isComparable(name)) continue;
            (everywhere || has(left, name) ? fields_ : missing_).push_back(name);
        }
        for (const std::string& name : left) {
            if (!isComparable(name) || has(right, name)) continue;
            (everywhere ? fields_ : missing_).push_back(name);
        }
    }

    // Whether both scans see the same value of a key.
    bool isCommon(const schema::Field& key) const {
        return !(circumstances_.otherUser && key.access != schema::Access::Everyone) &&
               !(circumstances_.otherPlace && (key.liveOnly || key.liveSeesMore));
    }

    void chooseKeys() {
        if (definition_ == nullptr) {
            // Another scanner's group. Its instances are taken to begin with what identifies them.
            if (!fields_.empty()) keys_ = {fields_.front()};
            return;
        }
        std::vector<std::string> all;
        bool hidden = false;
        for (const schema::Field& field : definition_->fields) {
            if (!field.key) continue;
            const std::string name(field.name);
            if (std::ranges::find(fields_, name) == fields_.end()) {
                hidden = true;
                continue;
            }
            all.push_back(name);
            if (isCommon(field)) keys_.push_back(name);
        }
        if (!keys_.empty()) return;
        keys_ = all;
        noKey_ = hidden && all.empty();
    }

    std::string keyText(const Instance& instance, bool anyVersion) const {
        std::string text;
        // Without a usable key only equal instances belong together.
        for (const std::string& key : noKey_ ? fields_ : keys_) {
            const std::string value = valueOf(instance, key);
            text += anyVersion ? withoutVersion(value) : value;
            text += '\0';
        }
        return text;
    }

    Instance keyOf(const Instance& instance) const {
        Instance key;
        for (const std::string& name : keys_) key.push_back({name, valueOf(instance, name)});
        return key;
    }

    // The key and the first field that people know the thing by.
    std::string labelOf(const Instance& instance) const {
        std::vector<std::string> parts;
        const auto add = [&parts](std::string value) {
            if (!value.empty() && std::ranges::find(parts, value) == parts.end())
                parts.push_back(std::move(value));
        };
        for (const std::string& key : keys_) add(valueOf(instance, key));
        for (const std::string_view name : {"Name", "Caption", "Description", "Model", "ProductName"}) {
            const std::string field(name);
            if (std::ranges::find(fields_, field) == fields_.end() || valueOf(instance, field).empty())
                continue;
            add(valueOf(instance, field));
            break;
        }
        return joined(parts);
    }

    // The status that the group has in the inventory of the scan without root's rights.
    const GroupStatus& statusWithoutRoot() const {
        return circumstances_.rootIsBefore ? after_.status : before_.status;
    }

    bool lacksPermission() const {
        return circumstances_.otherUser && statusWithoutRoot().reason == "permission";
    }

    InstanceChange onlyOne(InstanceChange::Kind kind, const Instance& instance) const {
        InstanceChange change{.kind = kind, .key = keyOf(instance), .label = labelOf(instance)};
        for (const std::string& name : fields_) {
            const std::string value = valueOf(instance, name);
            if (!value.empty()) change.fields.push_back({name, value});
        }
        // Whether root's inventory is the one that has the instance.
        const bool seenByRoot = circumstances_.rootIsBefore == (kind == InstanceChange::Kind::Removed);
        const bool keyNeedsRoot =
            circumstances_.otherUser && std::ranges::any_of(keys_, [this](const std::string& key) {
                const schema::Field* const definition = definitionOf(key);
                return definition != nullptr && definition->access != schema::Access::Everyone;
            });
        if (keyNeedsRoot || (seenByRoot && lacksPermission())) change.needs = Needs::Root;
        return change;
    }

    Needs needsOf(const std::string& field, const std::string& before, const std::string& after) const {
        const schema::Field* const definition = definitionOf(field);
        if (definition == nullptr) return Needs::Nothing;
        const std::string& others = circumstances_.rootIsBefore ? after : before;
        const bool hidden = definition->access == schema::Access::RootSeesMore || others.empty();
        if (circumstances_.otherUser && hidden &&
            (definition->access != schema::Access::Everyone || lacksPermission()))
            return Needs::Root;
        if (circumstances_.otherPlace && (definition->liveOnly || definition->liveSeesMore))
            return Needs::LiveMachine;
        return Needs::Nothing;
    }

    InstanceChange changed(const Instance& before, const Instance& after) const {
        InstanceChange change{.key = keyOf(after), .label = labelOf(after)};
        for (const std::string& name : fields_) {
            std::string left = valueOf(before, name);
            std::string right = valueOf(after, name);
            if (left == right) continue;
            const schema::Field* const definition = definitionOf(name);
            const Needs needs = needsOf(name, left, right);
            change.values.push_back(
                {name, std::move(left), std::move(right), definition != nullptr && definition->list, needs});
        }
        return change;
    }

    const Circumstances& circumstances_;
    const Group& before_;
    const Group& after_;
    const schema::Group* definition_;
    std::vector<std::string> fields_;  // that are compared
    std::vector<std::string> missing_;
    std::vector<std::string> keys_;  // empty if the group has at most one instance
    bool noKey_ = false;             // whether the inventories do not have the keys of the group
};

class InventoryComparison {
  public:
    InventoryComparison(const SavedInventory& before, const SavedInventory& after)
        : before_(before), after_(after) {
        circumstances_.otherUser =
            before.privileged && after.privileged && *before.privileged != *after.privileged;
        circumstances_.rootIsBefore = before.privileged.value_or(false);
        circumstances_.otherPlace = before.ofTree != after.ofTree;
        circumstances_.hashes = before.sanitized || after.sanitized;
    }

    InventoryDiff compare() {
        if (circumstances_.hashes)
            note(fmt::format("{} has hashes instead of private values, which are not compared",
                             before_.sanitized ? before_.file : after_.file));
        for (const Group& group : after_.groups) {
            if (const Group* const other = before_.find(group.name)) compareGroups(*other, group);
        }
        addGroupsOfOne(before_, after_);
        addGroupsOfOne(after_, before_);
        if (!omitted_.empty()) note("not compared: " + summary(omitted_));
        if (!incomplete_.empty()) note("compared as far as they were read: " + summary(incomplete_));
        return std::move(result_);
    }

  private:
    // Reasons in the order in which they first occurred, each with the names of groups or fields.
    using Reasons = std::vector<std::pair<std::string, std::vector<std::string>>>;

    void note(std::string text) { result_.notes.push_back(std::move(text)); }

    static void add(Reasons& reasons, const std::string& reason, const std::string& name) {
        auto found = std::ranges::find(reasons, reason, &Reasons::value_type::first);
        if (found == reasons.end()) found = reasons.insert(found, {reason, {}});
        if (std::ranges::find(found->second, name) == found->second.end()) found->second.push_back(name);
    }

    // "Storage, Memory (only in old.xml); Printer (unread in new.xml: it took too long)"
    static std::string summary(const Reasons& reasons) {
        std::string text;
        for (const auto& [reason, names] : reasons)
            text += fmt::format("{}{} ({})", text.empty() ? "" : "; ", joined(names), reason);
        return text;
    }

    void addGroupsOfOne(const SavedInventory& having, const SavedInventory& lacking) {
        for (const Group& group : having.groups) {
            if (lacking.find(group.name) == nullptr) add(omitted_, "only in " + having.file, group.name);
        }
    }

    // Whether the group of this inventory can be compared. Adds it to the groups that are incomplete or left out.
    bool isUsable(const SavedInventory& inventory, const Group& group, const Group& other) {
        const GroupState state = group.status.state;
        const bool lacking = state == GroupState::Unread || state == GroupState::Partial;
        const bool absent = state == GroupState::Unsupported || group.status.reason == "not-in-tree";
        if (!absent && !lacking) return true;
        // Both scans were the same in this.
        if (state == other.status.state && group.status.reason == other.status.reason) return true;
        // Differences of the group are told as what needs root.
        if (lacking && group.status.reason == "permission" && circumstances_.otherUser) return true;
        const std::string reason = group.status.reason.empty() ? "" : ": " + reasonText(group.status.reason);
        const bool usable = state == GroupState::Partial;
        add(usable ? incomplete_ : omitted_,
            fmt::format("{} in {}{}", statusWord(state), inventory.file, reason), group.name);
        return usable;
    }

    void compareGroups(const Group& before, const Group& after) {
        const bool usable = isUsable(before_, before, after);
        if (!isUsable(after_, after, before) || !usable) return;
        const GroupComparison comparison(circumstances_, before, after);
        for (const std::string& field : comparison.missingFields())
            add(omitted_, "only in one of the inventories", after.name + " " + field);
        GroupChanges changes = comparison.changes();
        if (!changes.instances.empty()) result_.groups.push_back(std::move(changes));
    }

    const SavedInventory& before_;
    const SavedInventory& after_;
    Circumstances circumstances_;
    Reasons omitted_;     // groups and fields that are not compared
    Reasons incomplete_;  // groups that are compared although they may lack something
    InventoryDiff result_;
};

}  // namespace

bool InventoryDiff::machineDiffers() const {
    InventoryDiff real = *this;
    real.ignoreAccess();
    return !real.groups.empty();
}

void InventoryDiff::ignoreAccess() {
    for (GroupChanges& group : groups) {
        for (InstanceChange& change : group.instances)
            std::erase_if(change.values,
                          [](const ValueChange& value) { return value.needs != Needs::Nothing; });
        std::erase_if(group.instances, [](const InstanceChange& change) {
            return change.kind == InstanceChange::Kind::Changed ? change.values.empty()
                                                                : change.needs != Needs::Nothing;
        });
    }
    std::erase_if(groups, [](const GroupChanges& group) { return group.instances.empty(); });
}

InventoryDiff compareInventories(const SavedInventory& before, const SavedInventory& after) {
    return InventoryComparison(before, after).compare();
}

}  // namespace zavcli
