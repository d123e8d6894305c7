// Helpers for the tests of groups: gather one group and compare its instances.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/Report.h"
#include "toolkit/quorvah/sources/Scan.h"

namespace toolkit::quorvah {

// The sorted report of one group.
inline Report gathered(std::string_view group, const Options& options) {
    Scan scan(options);
    const Group* const found = findGroup(group);
    if (found == nullptr || found->gather == nullptr) {
        ADD_FAILURE() << group << " is not gathered";
        return Report(kScanInfo);
    }
    Report report(*found);
    found->gather(scan, report);
    report.sort();
    return report;
}

// From the machine that runs the test.
inline Report gatheredLive(std::string_view group) {
    return gathered(group, {});
}

// From a tree. Device names come from the small databases in tests/toolkit/quorvah/trees/ids.
inline Report gatheredBelow(std::string_view group, const std::filesystem::path& directory) {
    Options options;
    options.root = directory.string();
    options.ids = QUORVAH_TEST_TREES "/ids";
    return gathered(group, options);
}

inline Report gatherFrom(const Group& group, const std::filesystem::path& directory) {
    Options options;
    options.root = directory.string();
    return gathered(group.xmlName, options);
}

// From one of the machines in tests/toolkit/quorvah/trees.
inline Report gatherTree(const Group& group, const std::string& machine, bool raw = false) {
    Options options;
    options.root = std::string(QUORVAH_TEST_TREES "/") + machine;
    options.raw = raw;
    return gathered(group.xmlName, options);
}

// The instance with that key. If there is none, the test fails and the instance is empty.
inline const Instance& instanceOf(const Report& report, std::string_view key) {
    for (const Instance& instance : report.instances()) {
        if (instance.values().front() == key) return instance;
    }
    ADD_FAILURE() << "no instance " << key;
    static Report none(report.group());
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

inline std::vector<std::string> keysOf(const Report& report) {
    std::vector<std::string> keys;
    for (const Instance& instance : report.instances()) keys.emplace_back(instance.values().front());
    return keys;
}

// Fields with their expected values. All other fields of the instance must be empty.
using Values = std::vector<std::pair<std::string, std::string>>;

inline void expectAll(const Group& group, const Instance& instance, const Values& expected) {
    Report wanted(group);
    Instance& whole = wanted.add();
    for (const auto& [field, value] : expected) whole.set(field, value);
    for (const FieldDef& field : group.fields) {
        EXPECT_EQ(instance.get(field.name), whole.get(field.name))
            << group.xmlName << " " << instance.values().front() << " " << field.name;
    }
}

// Expects a single instance.
inline void expectOnly(const Group& group, const std::string& machine, const Values& expected) {
    const Report report = gatherTree(group, machine);
    ASSERT_EQ(report.instances().size(), 1U) << group.xmlName << " of " << machine;
    expectAll(group, report.instances().front(), expected);
}

inline void expectInstance(const Group& group, const std::string& machine, const std::string& key,
                           const Values& expected) {
    const Report report = gatherTree(group, machine);
    expectAll(group, instanceOf(report, key), expected);
}

}  // namespace toolkit::quorvah
