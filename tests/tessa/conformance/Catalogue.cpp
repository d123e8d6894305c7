#include "tests/tessa/conformance/Catalogue.h"

#include "tests/tessa/conformance/Documents.h"

namespace tessa::conformance {

namespace {

namespace fs = std::filesystem;

std::string attribute(const Node& element, const wchar_t* name, const std::string& otherwise = "") {
    for (const Attribute& each : *element.attributes()) {
        if (each.name->view() == name) return each.value;
    }
    return otherwise;
}

Case caseOf(const Node& element, const fs::path& base) {
    Case each;
    each.id = attribute(element, L"ID");
    each.type = attribute(element, L"TYPE");
    each.entities = attribute(element, L"ENTITIES", "none");
    each.editions = attribute(element, L"EDITION");
    const std::string recommendation = attribute(element, L"RECOMMENDATION", "XML1.0");
    each.version = attribute(element, L"VERSION", "1.0");
    each.namespaces = recommendation.starts_with("NS");
    each.path = base / attribute(element, L"URI");
    const std::string output = attribute(element, L"OUTPUT");
    if (!output.empty()) each.output = base / output;
    return each;
}

// Recursive: the catalogue has only a few levels.
void collect(const Node& element, const fs::path& base, std::vector<Case>& cases) {
    const NodeList* children = nullptr;
    if (element.getChildren(&children) != 0) return;
    for (const Node* const child : *children) {
        if (child->type() != Node::kElement) continue;
        if (child->name().view() == L"TEST") {
            cases.push_back(caseOf(*child, base));
        } else {
            collect(*child, base / attribute(*child, L"xml:base"), cases);
        }
    }
}

}  // namespace

std::vector<Case> casesOf(const fs::path& suite) {
    std::vector<Case> cases;
    const Tree catalogue = treeOf(suite / "cleaned" / "xmlconf-flattened.xml");
    if (catalogue.root != nullptr) collect(*catalogue.root, suite / "xmlconf", cases);
    return cases;
}

}  // namespace tessa::conformance
