// What the tests of groups on whole trees have in common.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {

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

// Fields with their values; those that are not given are unknown.
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

// The single instance of a group.
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
