#pragma once

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/ScannerProcess.h"
#include "toolkit/quorvah/groups/GroupTable.h"

namespace quorvahtest {

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
        return runScanner(options, environment);
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
