#include "tests/toolkit/quorvis/ScannerRun.h"

#include <memory>
#include <stdexcept>

#include "kest/String.h"
#include "kest/Text.h"
#include "tessa/Node.h"
#include "tessa/NodeReader.h"
#include "tests/support/Program.h"

namespace quorvistest {

namespace {

struct Sink : tessa::NodeSink {
    int onNodeTree(tessa::Node* node) override {
        root.reset(node);
        return 0;
    }
    std::unique_ptr<tessa::Node> root;
};

std::unique_ptr<tessa::Node> documentOf(const std::string& file) {
    Sink sink;
    tessa::NodeReader reader(sink);
    if (reader.process(kest::String(kest::widen(file)), 0) != 0) throw std::runtime_error("no XML: " + file);
    return std::move(sink.root);
}

const tessa::NodeList& childrenOf(const tessa::Node& node) {
    const tessa::NodeList* children = nullptr;
    if (node.getChildren(&children) != 0) throw std::runtime_error("text where an element belongs");
    return *children;
}

std::string attributeOf(const tessa::Node& node, const std::wstring& name) {
    for (const tessa::Attribute& attribute : *node.attributes()) {
        if (attribute.name->view() == name) return attribute.value;
    }
    return {};
}

FoundSoftware softwareOf(const tessa::Node& match) {
    FoundSoftware software{attributeOf(match, L"name"), {}};
    for (const tessa::Node* const child : childrenOf(match)) {
        if (child->name().view() == L"Variable")
            software.variables.emplace_back(attributeOf(*child, L"name"), attributeOf(*child, L"value"));
    }
    return software;
}

ScannerRun run(const std::string& signatures, const std::string& root, const std::string& settings) {
    const zavtest::ScratchDir dir;
    const std::string config =
        dir.write("config.xml", "<Configuration>" + settings + "</Configuration>").string();
    const std::string output = (dir.path() / "out.xml").string();
    const std::string warnings = (dir.path() / "warnings.xml").string();
    std::vector<std::string> arguments = {"-c", config, "-o", output, "-e", warnings, "-i", signatures};
    if (!root.empty()) arguments.insert(arguments.end(), {"--root", root});
    const zavtest::Finished finished = zavtest::runProgram(QUORVIS_PROGRAM, arguments);
    if (finished.status != 0) throw std::runtime_error(finished.output + finished.errors);

    ScannerRun result;
    const std::unique_ptr<tessa::Node> matches = documentOf(output);
    for (const tessa::Node* const match : childrenOf(*matches))
        result.found.emplace(attributeOf(*match, L"guid"), softwareOf(*match));
    const std::unique_ptr<tessa::Node> events = documentOf(warnings);
    for (const tessa::Node* const event : childrenOf(*events))
        result.events.emplace(attributeOf(*event, L"guid"), attributeOf(*event, L"code"));
    return result;
}

}  // namespace

std::vector<std::string> ScannerRun::eventsOf(const std::string& guid) const {
    std::vector<std::string> codes;
    const auto [begin, end] = events.equal_range(guid);
    for (auto event = begin; event != end; ++event) codes.push_back(event->second);
    return codes;
}

ScannerRun runScanner(const std::string& signatures, const std::string& root) {
    return run(signatures, root, "");
}

ScannerRun runScannerOnWholeTree(const std::string& signatures, const std::string& root) {
    return run(signatures, root,
               R"(<Plugin name="FileSystem"><Attribute name="wholeTree" value="true"/>)"
               R"(<Attribute name="maxDepth" value="64"/></Plugin>)");
}

}  // namespace quorvistest
