#include "toolkit/quorvis/formats/XmlParser.h"

#include <expat.h>

#include <exception>
#include <memory>
#include <new>

#include "kest/Shown.h"
#include "tessa/Encoding.h"

namespace toolkit::quorvis {

namespace {

// Expat copies what it is given, so a large document comes in blocks. It counts lines after every block but the last,
// so others come as a whole.
constexpr std::size_t kBlock = std::size_t{256} << 10;
constexpr std::size_t kLarge = std::size_t{2} << 20;

// Expat looks at an unfinished token anew with every block, so an endless one would cost quadratic time.
constexpr std::size_t kLongestToken = std::size_t{4} << 20;

class Parser {
  public:
    Parser(const DocumentText& document, unsigned maxDepth, XmlHandler& handler)
        : handler_(handler),
          maxDepth_(maxDepth),
          parser_(XML_ParserCreate(document.utf8 ? nullptr : "ISO-8859-1")) {
        if (parser_ == nullptr) throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
        XML_SetXmlDeclHandler(parser_.get(), onDeclaration);
        XML_SetStartDoctypeDeclHandler(parser_.get(), onDoctype);
    }

    std::optional<XmlFault> parse(std::string_view bytes) {
        const std::size_t blockSize = bytes.size() > kLarge ? kBlock : kLarge;
        for (std::size_t given = 0;;) {
            const std::string_view block = bytes.substr(given, blockSize);
            given += block.size();
            const bool last = given == bytes.size();
            const XML_Status status =
                XML_Parse(parser_.get(), block.data(), static_cast<int>(block.size()), last ? 1 : 0);
            if (thrown_) std::rethrow_exception(thrown_);
            if (fault_) return fault_;
            if (status != XML_STATUS_OK) return faultOfExpat();
            if (last) return std::nullopt;
            if (given - offset() > kLongestToken) return XmlFault{offset(), "longer than 4 MiB"};
        }
    }

  private:
    static void XMLCALL onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        auto& parser = *static_cast<Parser*>(self);
        parser.seen_ = true;
        if (++parser.depth_ > parser.maxDepth_) {
            parser.refuse("elements are nested deeper than " + std::to_string(parser.maxDepth_));
            return;
        }
        parser.guarded([&] { parser.handler_.onStart(name, attributes, parser.offset()); });
    }
    static void XMLCALL onEnd(void* self, const XML_Char* /*name*/) {
        auto& parser = *static_cast<Parser*>(self);
        --parser.depth_;
        parser.guarded([&] { parser.handler_.onEnd(); });
    }
    static void XMLCALL onText(void* self, const XML_Char* text, int length) {
        auto& parser = *static_cast<Parser*>(self);
        parser.guarded([&] {
            parser.handler_.onText({text, static_cast<std::size_t>(length)}, parser.offset());
        });
    }
    // What a file in another encoding or version says could only be guessed. Products do write version 1.1, and what it
    // allows beyond 1.0 is malformed here.
    static void XMLCALL onDeclaration(void* self, const XML_Char* version, const XML_Char* encoding,
                                      int /*standalone*/) {
        auto& parser = *static_cast<Parser*>(self);
        if (version != nullptr && !std::string_view(version).starts_with("1."))
            parser.refuse("XML version " + kest::quoted(version) + " is not supported");
        if (encoding != nullptr && !tessa::ByteForm::readByExpat(encoding))
            parser.refuse("encoding " + kest::quoted(encoding) + " is not supported, UTF-8 is expected");
    }
    static void XMLCALL onDoctype(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
        static_cast<Parser*>(self)->refuse("a document type declaration is not allowed");
    }

    // Expat may tell of a little more after it was stopped; nothing is thrown through it.
    template <class Call>
    void guarded(Call call) {
        if (stopped_) return;
        try {
            call();
        } catch (...) {
            thrown_ = std::current_exception();
            stop();
        }
    }
    void refuse(std::string text) {
        if (stopped_) return;
        fault_ = XmlFault{offset(), std::move(text)};
        stop();
    }
    void stop() {
        stopped_ = true;
        XML_StopParser(parser_.get(), XML_FALSE);
    }

    XmlFault faultOfExpat() const {
        const XML_Error code = XML_GetErrorCode(parser_.get());
        if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        // That of the file itself can only be a second one once an element was seen.
        if (code == XML_ERROR_MISPLACED_XML_PI && seen_)
            return {offset(), "a second XML declaration: only the whole file may have one"};
        return {offset(), XML_ErrorString(code)};
    }

    std::size_t offset() const {
        const XML_Index index = XML_GetCurrentByteIndex(parser_.get());
        return index < 0 ? 0 : static_cast<std::size_t>(index);
    }

    struct Free {
        void operator()(XML_ParserStruct* parser) const { XML_ParserFree(parser); }
    };

    XmlHandler& handler_;
    unsigned maxDepth_;
    std::unique_ptr<XML_ParserStruct, Free> parser_;
    unsigned depth_ = 0;
    bool seen_ = false;
    bool stopped_ = false;
    std::optional<XmlFault> fault_;
    std::exception_ptr thrown_;
};

}  // namespace

std::optional<XmlFault> parseXml(const DocumentText& document, unsigned maxDepth, XmlHandler& handler) {
    return Parser(document, maxDepth, handler).parse(document.bytes);
}

}  // namespace toolkit::quorvis
