#include "toolkit/quorvis/formats/XmlReader.h"

#include <expat.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <new>

#include "kest/Descriptor.h"
#include "kest/Escape.h"
#include "kest/Retry.h"
#include "tessa/Encoding.h"
#include "toolkit/machine/text/Utf8.h"

namespace toolkit::quorvis {

namespace {

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

// False, with errno set, when the file cannot be read.
bool readAll(const std::string& path, std::string& bytes) {
    kest::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return false;
    constexpr std::size_t kBlock = std::size_t{64} << 10;
    const auto expected = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
    bytes.resize(std::min(expected, kMaxDocumentSize) + 1);
    std::size_t used = 0;
    for (;;) {
        if (used == bytes.size()) bytes.resize(used + kBlock);
        const ssize_t count = kest::retryInterrupted(
            [&] { return ::read(file.number(), bytes.data() + used, bytes.size() - used); });
        if (count < 0) return false;
        used += static_cast<std::size_t>(count);
        if (count == 0 || used > kMaxDocumentSize) break;
    }
    bytes.resize(used);
    return true;
}

// Expat copies its input, so a large document is passed in blocks. Expat counts lines after every block except the last,
// so a small document is passed as a whole.
constexpr std::size_t kBlockSize = std::size_t{256} << 10;
constexpr std::size_t kLargeDocument = std::size_t{2} << 20;

// Expat rescans an incomplete token with every block, so an unlimited token would take quadratic time.
constexpr std::size_t kMaxTokenSize = std::size_t{4} << 20;

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
        const std::size_t blockSize = bytes.size() > kLargeDocument ? kBlockSize : kLargeDocument;
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
            if (given - offset() > kMaxTokenSize) return XmlFault{offset(), "longer than 4 MiB"};
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
    // Refuses other encodings and major versions. Files of version 1.1 exist and are parsed as version 1.0: constructs that
    // only 1.1 allows are faults.
    static void XMLCALL onDeclaration(void* self, const XML_Char* version, const XML_Char* encoding,
                                      int /*standalone*/) {
        auto& parser = *static_cast<Parser*>(self);
        if (version != nullptr && !std::string_view(version).starts_with("1."))
            parser.refuse("XML version " + kest::quoted(version) + " is not supported");
        if (encoding != nullptr && !tessa::ByteLayout::readByExpat(encoding))
            parser.refuse("encoding " + kest::quoted(encoding) + " is not supported, UTF-8 is expected");
    }
    static void XMLCALL onDoctype(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
        static_cast<Parser*>(self)->refuse("a document type declaration is not allowed");
    }

    // Expat may make further calls after it was stopped. No exception may pass through it.
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
        // After an element, this can only be a second declaration.
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

constexpr unsigned kMaxDepth = 64;

std::string_view localName(std::string_view name) {
    return name.substr(name.rfind(':') + 1);
}

class Forwarder : public XmlHandler {
  public:
    Forwarder(XmlEvents& events, const ProgressCheck& checkProgress)
        : events_(events), checkProgress_(checkProgress) {}

    void onStart(std::string_view name, const char* const* attributes, std::size_t /*offset*/) override {
        checkProgress();
        events_.start(localName(name), XmlAttributes(attributes));
    }
    void onEnd() override { events_.end(); }
    void onText(std::string_view text, std::size_t /*offset*/) override {
        checkProgress();
        events_.text(text);
    }

  private:
    void checkProgress() const {
        if (checkProgress_) checkProgress_();
    }

    XmlEvents& events_;
    const ProgressCheck& checkProgress_;
};

}  // namespace

DocumentText readDocument(const std::string& path) {
    DocumentText document;
    if (!readAll(path, document.bytes)) {
        document.error = path + ": " + std::strerror(errno);
    } else if (document.bytes.size() > kMaxDocumentSize) {
        document.error = path + ": larger than 64 MiB";
    } else if (const int unit = tessa::ByteLayout::of(document.bytes).unit; unit != 1) {
        document.error = path + (unit == 2 ? ": in UTF-16" : ": in UTF-32") + ", UTF-8 is expected";
    } else {
        document.utf8 = isUtf8(document.bytes);
    }
    return document;
}

std::size_t columnIn(const DocumentText& document, std::size_t offset) {
    const std::string_view before = std::string_view(document.bytes).substr(0, offset);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    if (!document.utf8) return 1 + line.size();
    return 1 + line.size() - static_cast<std::size_t>(std::ranges::count_if(line, isContinuation));
}

TextPlace placeIn(const DocumentText& document, std::size_t offset) {
    const std::string_view before = std::string_view(document.bytes).substr(0, offset);
    const auto lines = static_cast<std::size_t>(std::ranges::count(before, '\n'));
    return {1 + lines, columnIn(document, offset)};
}

std::optional<XmlFault> parseXml(const DocumentText& document, unsigned maxDepth, XmlHandler& handler) {
    return Parser(document, maxDepth, handler).parse(document.bytes);
}

std::optional<std::string_view> XmlAttributes::find(std::string_view name) const {
    for (const char* const* pair = pairs_; *pair != nullptr; pair += 2) {
        if (localName(*pair) == name) return pair[1];
    }
    return std::nullopt;
}

std::optional<std::string> readXml(std::string_view document, XmlEvents& events,
                                   const ProgressCheck& checkProgress) {
    if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return "the document is larger than 2 GiB";
    // A document in another encoding must declare it.
    const DocumentText text{std::string(document), true, {}};
    Forwarder forwarder(events, checkProgress);
    const std::optional<XmlFault> fault = parseXml(text, kMaxDepth, forwarder);
    if (!fault) return std::nullopt;
    const TextPlace place = placeIn(text, fault->offset);
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column) + ": " +
           fault->text;
}

}  // namespace toolkit::quorvis
