// The built scanner, run as its users run it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "kest/String.h"
#include "kest/Text.h"
#include "tessa/Node.h"
#include "tessa/NodeReader.h"
#include "tests/support/Program.h"
#include "tests/support/ScratchDir.h"
#include "toolkit/quorvah/groups/GroupTable.h"

namespace quorvahtest {

using zavtest::Finished;

// Runs the scanner with these arguments and additions to the environment ("NAME=value").
inline Finished runScanner(const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment = {}) {
    return zavtest::runProgram(QUORVAH_PROGRAM, arguments, environment);
}

struct Element {
    std::string group;
    std::vector<std::pair<std::string, std::string>> fields;

    const std::string& operator[](const std::string& name) const {
        for (const auto& [field, value] : fields) {
            if (field == name) return value;
        }
        throw std::out_of_range(group + " has no field " + name);
    }
};

namespace detail {

struct Sink : tessa::NodeSink {
    int onNodeTree(tessa::Node* node) override {
        root.reset(node);
        return 0;
    }
    std::unique_ptr<tessa::Node> root;
};

inline const tessa::NodeList& childrenOf(const tessa::Node& node) {
    const tessa::NodeList* children = nullptr;
    if (node.getChildren(&children) != 0) throw std::runtime_error("text where an element belongs");
    return *children;
}

}  // namespace detail

// The instances in an output file. Throws when anything stands in it that a strict reader refuses: text, even
// blanks, beside elements, or elements within a field.
inline std::vector<Element> readOutput(const std::filesystem::path& file) {
    detail::Sink sink;
    tessa::NodeReader reader(sink);
    reader.keepWhitespace = true;
    if (reader.process(kest::String(kest::widen(file.string())), 0) != 0)
        throw std::runtime_error("no XML: " + file.string());
    std::vector<Element> elements;
    for (const tessa::Node* const instance : detail::childrenOf(*sink.root)) {
        Element element;
        element.group = kest::narrow(instance->name().view());
        for (const tessa::Node* const field : detail::childrenOf(*instance)) {
            std::string value;
            for (const tessa::Node* const text : detail::childrenOf(*field)) {
                if (text->type() != tessa::Node::kText) throw std::runtime_error("an element within a field");
                value += kest::narrow(text->text());
            }
            element.fields.emplace_back(kest::narrow(field->name().view()), value);
        }
        elements.push_back(std::move(element));
    }
    return elements;
}

// Runs the scanner on groups and reads what it wrote.
class ScannerTest : public testing::Test {
  protected:
    // Writes a configuration that asks for these groups and returns its path.
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
