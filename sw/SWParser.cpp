#include "sw/SWParser.h"

#include <algorithm>
#include <cstring>

#include "intake/NodeChildren.h"
#include "intake/XMLParser.h"
#include "sw/SWNodeText.h"
#include "tessa/TextStore.h"

namespace zav {

namespace {

using tessa::Attribute;
using tessa::Node;
using tessa::NodeList;

constexpr int kExact = 0;
constexpr int kIgnoreCase = 1;

// Matches names against a given one. Equal names of a document have one address, so the last match is remembered by it.
class NameMatcher {
  public:
    NameMatcher(const wchar_t* text, int ignoreCase) : text_(text), ignoreCase_(ignoreCase) {}

    bool matches(const kest::String& name) {
        if (&name == latest_) return true;
        if (name.compareTo(text_, ignoreCase_) != 0) return false;
        latest_ = &name;
        return true;
    }

  private:
    const kest::String text_;
    const int ignoreCase_;
    const kest::String* latest_ = nullptr;
};

// Widens the names of variables. Signatures often have variables of the same names in the same order, which then share
// their wide names.
class VariableNames {
  public:
    // `position` is that of the variable in its signature.
    const wchar_t* wide(std::size_t position, const char* name) {
        if (position < latest_.size() && std::strcmp(latest_[position].name, name) == 0)
            return latest_[position].wide;
        const wchar_t* const wide = tessa::TextStore::wide(name);
        latest_.resize(std::max(latest_.size(), position + 1), {"", L""});
        latest_[position] = {name, wide};
        return wide;
    }

  private:
    struct Name {
        const char* name;
        const wchar_t* wide;
    };

    std::vector<Name> latest_;  // by position
};

// Converts the matched signatures of a document into results.
class SignatureReader {
  public:
    explicit SignatureReader(ZAVSwCtx* context) : context_(context) {}

    bool isSignature(const Node* node) { return isElement(node) && signatureName_.matches(node->name()); }

    void read(const Node* signature) {
        auto result = std::make_unique<ZAVSwResult>();
        if (signature != nullptr) {
            readAttributes(*result, signature);
            readChildren(*result, signature);
        }
        result->generateVariablesNames();
        context_->results.push_back(std::move(result));
    }

  private:
    void readAttributes(ZAVSwResult& result, const Node* signature) {
        for (const Attribute& attribute : *signature->attributes()) {
            if (guidName_.matches(*attribute.name)) {
                result.guid = attribute.value;
            } else if (nameName_.matches(*attribute.name)) {
                result.name = attribute.value;
            }
        }
    }

    void readChildren(ZAVSwResult& result, const Node* signature) {
        const NodeList* const children = childrenOf(signature);
        if (children == nullptr) return;
        const Node* metadata = nullptr;
        variables_.clear();
        for (const Node* const child : *children) {
            if (!isElement(child)) continue;
            if (variableName_.matches(child->name())) {
                readVariable(child);
            } else if (metadataName_.matches(child->name())) {
                metadata = child;
            }
        }
        result.setVariables(variables_);
        if (metadata == nullptr) return;
        result.metadata = context_->texts.metadata.emplace_back(text_.of(metadata, Node::kIndented)).c_str();
    }

    void readVariable(const Node* element) {
        SWVariable variable = {L"", ""};
        for (const Attribute& attribute : *element->attributes()) {
            if (variableNameName_.matches(*attribute.name)) {
                variable.name = variableNames_.wide(variables_.size(), attribute.value);
            } else if (valueName_.matches(*attribute.name)) {
                variable.value = attribute.value;
            }
        }
        if (*variable.name != L'\0') variables_.push_back(variable);
    }

    ZAVSwCtx* context_;
    std::vector<SWVariable> variables_;  // of the current signature, in document order
    VariableNames variableNames_;
    SWNodeText text_;
    NameMatcher signatureName_{L"MatchedSignature", kExact};
    NameMatcher guidName_{L"guid", kIgnoreCase};
    NameMatcher nameName_{L"name", kIgnoreCase};
    NameMatcher metadataName_{L"Metadata", kExact};
    NameMatcher variableName_{L"Variable", kExact};
    NameMatcher variableNameName_{L"name", kExact};
    NameMatcher valueName_{L"value", kExact};
};

kest::Malloced<ZAVSwResult*> pointersTo(const std::vector<std::unique_ptr<ZAVSwResult>>& results) {
    kest::Malloced<ZAVSwResult*> array = kest::mallocArray<ZAVSwResult*>(results.size());
    std::transform(results.begin(), results.end(), array.get(),
                   [](const auto& result) { return result.get(); });
    return array;
}

kest::Malloced<const wchar_t*> pointersTo(const std::vector<std::wstring>& texts) {
    kest::Malloced<const wchar_t*> array = kest::mallocArray<const wchar_t*>(texts.size());
    std::transform(texts.begin(), texts.end(), array.get(),
                   [](const std::wstring& text) { return text.c_str(); });
    return array;
}

void readSignatures(ZAVSwCtx* context, const Node* root) {
    const NodeList* const children = childrenOf(root);
    if (children == nullptr) return;
    context->texts.documents.push_back(root->shareTexts());
    SignatureReader signatures(context);
    for (const Node* const child : *children) {
        if (signatures.isSignature(child)) signatures.read(child);
    }
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): as its callers know it
int SW_ParseOutput(ZAVSwCtx* context, std::wstring outputFile, std::wstring warningsFile) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    const XMLParser output(&context->logger(), outputFile.c_str());
    const XMLParser warnings(&context->logger(), warningsFile.c_str());
    if (output.status > 0) return ZAV_ERROR_SW_OUTPUT;
    const int code = SW_parseOutData(context, output.getRootNode());
    if (code != ZAV_SUCCESS) return code;
    if (warnings.status > 0) return ZAV_ERROR_SW_WARNINGS;
    return SW_parseWarnData(context, warnings.getRootNode());
}

int SW_parseOutData(ZAVSwCtx* context, const Node* root) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    context->logger().traceMAX("SW_parseOutData", "Parsing output file");
    readSignatures(context, root);
    context->resultsArray = pointersTo(context->results);
    context->guidResults.build(context->results);
    return ZAV_SUCCESS;
}

int SW_parseMatchedSignature(ZAVSwCtx* context, const Node* signature) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    SignatureReader(context).read(signature);
    return ZAV_SUCCESS;
}

int SW_parseWarnData(ZAVSwCtx* context, const Node* root) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    context->logger().traceMAX("SW_parseWarnData", "Parsing warn data");
    const NodeList* const children = childrenOf(root);
    if (children == nullptr) return ZAV_SUCCESS;
    SWNodeText text;
    NameMatcher event(L"Event", kExact);
    for (const Node* const child : *children) {
        if (event.matches(child->name())) context->warnings.push_back(text.of(child, Node::kCompact));
    }
    if (!context->warnings.empty()) context->warningsArray = pointersTo(context->warnings);
    return ZAV_SUCCESS;
}

}  // namespace zav
