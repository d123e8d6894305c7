#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "schema/Catalogue.h"
#include "schema/FieldForm.h"
#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/ScannerProcess.h"
#include "toolkit/quorvah/groups/GroupTable.h"

namespace quorvahtest {

// Fails unless the elements have the fields and forms that the catalogue states.
inline void expectValid(const std::vector<Element>& elements, bool sanitized) {
    for (const Element& element : elements) {
        const schema::Group* const group = schema::findGroup(element.group);
        ASSERT_NE(nullptr, group) << element.group;
        ASSERT_EQ(group->fields.size(), element.fields.size()) << element.group;
        for (std::size_t i = 0; i < group->fields.size(); ++i) {
            const schema::Field& field = group->fields[i];
            const auto& [name, value] = element.fields[i];
            EXPECT_EQ(field.name, name) << element.group;
            EXPECT_TRUE(sanitized ? schema::hasSanitizedForm(field, value) : schema::hasForm(field, value))
                << element.group << " " << name << " " << value;
        }
    }
}

// A fixture that runs the scanner on groups and reads its output.
class ScannerTest : public testing::Test {
  protected:
    // Writes a configuration with these groups and returns its path.
    std::string configure(const std::vector<std::string>& groups) const {
        std::string text = "<QEL><ZAV><Hardware version=\"1.0\">\n";
        for (const std::string& group : groups) text += "\t\t<Group Name=\"" + group + "\"/>\n";
        return dir_.write("config.xml", text + "</Hardware></ZAV></QEL>\n").string();
    }
    Finished scan(const std::vector<std::string>& groups, std::vector<std::string> options = {},
                  const std::vector<std::string>& environment = {}) const {
        options.insert(options.begin(), {"-c", configure(groups), "-o", out()});
        Finished done = runScanner(options, environment);
        const auto has = [&](const char* option, const char* variable) {
            return std::ranges::count(options, option) > 0 || std::ranges::count(environment, variable) > 0;
        };
        if (done.status == 0) {
            const bool pretty = has("--pretty", "QUORVAH_PRETTY=1");
            expectValid(readOutput(out(), pretty), has("--sanitize", "QUORVAH_SANITIZE=1"));
        }
        return done;
    }
    std::string out() const { return (dir_.path() / "out.xml").string(); }
    std::vector<Element> elements() const { return readOutput(out()); }
    std::multiset<std::string> groupsWritten() const {
        std::multiset<std::string> groups;
        for (const Element& element : elements()) groups.insert(element.group);
        return groups;
    }
    Element only() const {
        const std::vector<Element> all = elements();
        if (all.size() != 1) throw std::runtime_error("not one element");
        return all.front();
    }

    zavtest::ScratchDir dir_;
};

inline std::vector<std::string> allDisplayNames() {
    std::vector<std::string> names;
    for (const toolkit::quorvah::Group* const group : toolkit::quorvah::allGroups())
        names.emplace_back(group->displayName);
    return names;
}

}  // namespace quorvahtest
