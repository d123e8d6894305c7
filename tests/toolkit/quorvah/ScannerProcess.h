// Runs the built scanner.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "kest/String.h"
#include "kest/Text.h"
#include "tessa/Node.h"
#include "tessa/NodeReader.h"
#include "tests/support/Program.h"

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

// The instances in an output file. Throws if there is text next to elements, even blanks unless it is pretty, or an element
// within a field.
inline std::vector<Element> readOutput(const std::filesystem::path& file, bool pretty = false) {
    detail::Sink sink;
    tessa::NodeReader reader(sink);
    reader.keepWhitespace = !pretty;
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

}  // namespace quorvahtest
