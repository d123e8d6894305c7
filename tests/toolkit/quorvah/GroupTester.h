// Helpers for the tests of groups: gather one group and compare its instances.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "schema/FieldForm.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// Fails for values that do not have the form that the catalogue states.
inline void expectForm(const GroupData& data) {
    for (const Instance& instance : data.instances()) {
        for (std::size_t i = 0; i < instance.values().size(); ++i) {
            const schema::Field& field = data.group().fields[i];
            EXPECT_TRUE(schema::hasForm(field, instance.values()[i]))
                << data.group().xmlName << " " << field.name << " " << instance.values()[i];
        }
    }
}

// The sorted data of one group.
inline GroupData gathered(const Group& group, const Options& options) {
    GatheringContext context(options);
    GroupData data(group);
    group.gather(context, data);
    expectForm(data);
    data.sort();
    return data;
}

// From the machine that runs the test.
inline GroupData gatheredLive(const Group& group) {
    return gathered(group, {});
}

// From a tree. Device names come from the small databases in tests/toolkit/quorvah/trees/ids.
inline GroupData gatheredBelow(const Group& group, const std::filesystem::path& directory, bool raw = false) {
    Options options;
    options.root = directory.string();
    options.ids = QUORVAH_TEST_TREES "/ids";
    options.raw = raw;
    return gathered(group, options);
}

// From one of the machines in tests/toolkit/quorvah/trees.
inline GroupData gatheredTree(const Group& group, const std::string& machine, bool raw = false) {
    return gatheredBelow(group, std::string(QUORVAH_TEST_TREES "/") + machine, raw);
}

// The instance with that key. If there is none, the test fails and the instance is empty.
inline const Instance& instanceOf(const GroupData& data, std::string_view key) {
    for (const Instance& instance : data.instances()) {
        if (instance.values().front() == key) return instance;
    }
    ADD_FAILURE() << "no instance " << key;
    static GroupData none(data.group());
    return none.instances().empty() ? none.add() : none.instances().front();
}

// All values of an instance, each followed by "|".
inline std::string joined(const Instance& instance) {
    std::string text;
    for (const std::string_view value : instance.values()) {
        text += value;
        text += '|';
    }
    return text;
}

inline std::vector<std::string> keysOf(const GroupData& data) {
    std::vector<std::string> keys;
    for (const Instance& instance : data.instances()) keys.emplace_back(instance.values().front());
    return keys;
}

// Fields with their expected values. All other fields of the instance must be empty.
using Values = std::vector<std::pair<std::string, std::string>>;

inline void expectAll(const Group& group, const Instance& instance, const Values& expected) {
    GroupData wanted(group);
    Instance& whole = wanted.add();
    for (const auto& [field, value] : expected) whole.set(field, value);
    for (const schema::Field& field : group.fields) {
        EXPECT_EQ(instance.get(field.name), whole.get(field.name))
            << group.xmlName << " " << instance.values().front() << " " << field.name;
    }
}

// Expects a single instance.
inline void expectOnly(const Group& group, const std::string& machine, const Values& expected) {
    const GroupData data = gatheredTree(group, machine);
    ASSERT_EQ(data.instances().size(), 1U) << group.xmlName << " of " << machine;
    expectAll(group, data.instances().front(), expected);
}

inline void expectInstance(const Group& group, const std::string& machine, const std::string& key,
                           const Values& expected) {
    const GroupData data = gatheredTree(group, machine);
    expectAll(group, instanceOf(data, key), expected);
}

}  // namespace toolkit::quorvah
