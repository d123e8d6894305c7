#include "bench/peers/LibxmlResults.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>
#include <memory>

#include "bench/peers/Results.h"
#include "kest/Text.h"
#include "tessa/TextStore.h"

namespace zavbench {

namespace {

const char* plain(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

bool isCalled(const xmlNode* node, const char* name) {
    return node->type == XML_ELEMENT_NODE && std::strcmp(plain(node->name), name) == 0;
}

class Copying {
  public:
    explicit Copying(ZAVSwCtx& context)
        : context_(context), texts_(std::make_shared<tessa::TextStore>()), buffer_(xmlBufferCreate()) {
        context.texts.documents.push_back(texts_);
    }
    ~Copying() { xmlBufferFree(buffer_); }
    Copying(const Copying&) = delete;
    Copying& operator=(const Copying&) = delete;

    void copy(xmlNode* signature) {
        auto result = std::make_unique<ZAVSwResult>();
        result->guid = attribute(signature, "guid");
        result->name = attribute(signature, "name");
        std::vector<zav::SWVariable> variables;
        for (xmlNode* child = signature->children; child != nullptr; child = child->next) {
            if (isCalled(child, "Variable"))
                variables.push_back(
                    {tessa::TextStore::wide(attribute(child, "name")), attribute(child, "value")});
            if (isCalled(child, "Metadata")) result->metadata = textOf(child);
        }
        result->setVariables(variables);
        addResult(context_, std::move(result));
    }

  private:
    const char* attribute(const xmlNode* element, const char* name) {
        for (const xmlAttr* next = element->properties; next != nullptr; next = next->next) {
            if (std::strcmp(plain(next->name), name) != 0) continue;
            return next->children == nullptr ? "" : texts_->add(plain(next->children->content));
        }
        return "";
    }

    const wchar_t* textOf(xmlNode* element) {
        xmlBufferEmpty(buffer_);
        xmlNodeDump(buffer_, element->doc, element, 0, 1);
        return context_.texts.metadata.emplace_back(kest::widen(plain(xmlBufferContent(buffer_)))).c_str();
    }

    ZAVSwCtx& context_;
    std::shared_ptr<tessa::TextStore> texts_;
    xmlBuffer* buffer_;
};

}  // namespace

bool fillResultsWithLibxml(const std::string& path, ZAVSwCtx& context) {
    xmlDoc* const document = xmlReadFile(path.c_str(), nullptr, XML_PARSE_HUGE);
    if (document == nullptr) return false;
    Copying copying(context);
    const xmlNode* const root = xmlDocGetRootElement(document);
    for (xmlNode* child = root->children; child != nullptr; child = child->next) {
        if (isCalled(child, "MatchedSignature")) copying.copy(child);
    }
    xmlFreeDoc(document);
    finishResults(context);
    return true;
}

}  // namespace zavbench
