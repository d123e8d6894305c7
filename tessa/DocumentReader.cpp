#include "tessa/DocumentReader.h"

#include <expat.h>

#include <exception>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "kest/Ascii.h"
#include "kest/Escape.h"
#include "kest/Text.h"
#include "tessa/Encoding.h"
#include "tessa/EntityTable.h"
#include "tessa/LineFinder.h"
#include "tessa/PlainReader.h"
#include "tessa/ReadError.h"
#include "tessa/Transcoder.h"
#include "tessa/TreeBuilder.h"
#include "tessa/Utf8.h"

namespace tessa {

namespace {

constexpr int kBlockSize = 64 << 10;

// Expat scans an incomplete token again with every block, so an endless comment or attribute would take quadratic time.
constexpr XML_Index kMaxTokenBytes = XML_Index{4} << 20;

// Reads one document with Expat and builds its tree.
class Document {
  public:
    // `encoding` is the document's encoding as a Transcoder names it; empty if Expat can read it directly.
    Document(const ReaderSettings& settings, NodeSink& sink, const ByteLayout& form,
             const std::string& encoding)
        : settings_(settings),
          sink_(sink),
          form_(form),
          encoding_(encoding),
          parser_(settings.expandNamespaces ? XML_ParserCreateNS(nullptr, '|') : XML_ParserCreate(nullptr)),
          builder_(settings.keepWhitespace) {
        if (parser_ == nullptr) throw std::bad_alloc();
        if (!encoding.empty()) {
            transcoder_.emplace(encoding.c_str());
            if (XML_SetEncoding(parser_.get(), "UTF-8") != XML_STATUS_OK) throw std::bad_alloc();
        }
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
        XML_SetXmlDeclHandler(parser_.get(), onDeclaration);
        XML_SetStartDoctypeDeclHandler(parser_.get(), onDoctype);
        // Expat then replaces parameter entities that the document declares. Its requests for external ones are refused.
        XML_SetParamEntityParsing(parser_.get(), XML_PARAM_ENTITY_PARSING_ALWAYS);
    }

    // Passes elements and texts to the finder instead of building a tree.
    void sendTo(LineFinder& finder) {
        finder_ = &finder;
        XML_SetElementHandler(parser_.get(), onSoughtStart, onSoughtEnd);
        XML_SetCharacterDataHandler(parser_.get(), onSoughtText);
    }

    // Null if no tree is built or if the document must be read again through a Transcoder.
    std::unique_ptr<Node> read(DocumentFile& file) {
        const int blockSize = settings_.blockSize > 0 ? settings_.blockSize : kBlockSize;
        for (XML_Index given = 0;;) {
            void* const block = XML_GetBuffer(parser_.get(), blockSize);
            if (block == nullptr) fail();
            const int count = transcoder_ ? transcoder_->read(file, static_cast<char*>(block), blockSize)
                                          : file.read(block, blockSize);
            const XML_Status status = XML_ParseBuffer(parser_.get(), count, count == 0 ? 1 : 0);
            if (!otherEncoding_.empty()) return nullptr;
            if (status != XML_STATUS_OK) fail();
            if (count == 0) return finished();
            given += count;
            if (given - XML_GetCurrentByteIndex(parser_.get()) > kMaxTokenBytes)
                throw fault("token too long");
        }
    }

    // The encoding with which the document must be read again; empty if it need not be.
    const std::string& otherEncoding() const { return otherEncoding_; }

  private:
    static void XMLCALL onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        handle(self, [=](Document& document) {
            if (document.hasDoctype_) document.entities_.leaveOutReferences(document.currentTag());
            document.startElement(name, attributes);
        });
    }

    static void XMLCALL onEnd(void* self, const XML_Char* /*name*/) {
        handle(self, [](Document& document) { document.builder_.endElement(); });
    }

    static void XMLCALL onText(void* self, const XML_Char* text, int length) {
        handle(self, [=](Document& document) {
            document.builder_.text({text, static_cast<std::size_t>(length)});
        });
    }

    static void XMLCALL onSoughtStart(void* self, const XML_Char* /*name*/, const XML_Char** /*attributes*/) {
        handle(self, [](Document& document) { document.finder_->startElement(document.line()); });
    }

    static void XMLCALL onSoughtEnd(void* self, const XML_Char* /*name*/) {
        handle(self, [](Document& document) { document.finder_->endElement(); });
    }

    static void XMLCALL onSoughtText(void* self, const XML_Char* text, int length) {
        handle(self, [=](Document& document) {
            document.finder_->text({text, static_cast<std::size_t>(length)}, document.line());
        });
    }

    static void XMLCALL onDeclaration(void* self, const XML_Char* version, const XML_Char* encoding,
                                      int /*standalone*/) {
        handle(self, [=](Document& document) {
            document.checkVersion(version);
            if (encoding != nullptr) document.checkEncoding(encoding);
        });
    }

    static void XMLCALL onDoctype(void* self, const XML_Char* /*name*/, const XML_Char* systemId,
                                  const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
        handle(self, [=](Document& document) { document.handleDoctype(systemId); });
    }

    static void XMLCALL onEntity(void* self, const XML_Char* name, int isParameter, const XML_Char* value,
                                 int length, const XML_Char* /*base*/, const XML_Char* systemId,
                                 const XML_Char* /*publicId*/, const XML_Char* /*notation*/) {
        handle(self, [=](Document& document) {
            EntityTable& entities = document.entities_;
            const bool taken =
                value != nullptr
                    ? entities.declare(name, isParameter != 0, {value, static_cast<std::size_t>(length)})
                    : entities.declareExternal(name, isParameter != 0, systemId != nullptr ? systemId : "");
            if (!taken) throw document.fault("too many entities");
        });
    }

    // Called for each attribute in an attribute list declaration; `value` is its default.
    static void XMLCALL onAttlist(void* self, const XML_Char* /*element*/, const XML_Char* /*attribute*/,
                                  const XML_Char* /*type*/, const XML_Char* value, int /*isRequired*/) {
        handle(self, [=](Document& document) {
            if (value != nullptr) document.entities_.leaveOutReferences(document.currentLiteral());
        });
    }

    static void XMLCALL onSkipped(void* self, const XML_Char* name, int isParameter) {
        handle(self,
               [=](Document& document) { document.entities_.leaveOutUndeclared(name, isParameter != 0); });
    }

    static int XMLCALL onExternal(XML_Parser parser, const XML_Char* openNames, const XML_Char* /*base*/,
                                  const XML_Char* systemId, const XML_Char* /*publicId*/) {
        handle(XML_GetUserData(parser), [=](Document& document) {
            if (openNames != nullptr) {
                document.entities_.leaveOutExternal(openNames);
            } else if (systemId != nullptr) {
                document.entities_.leaveOutExternalParameter(systemId);
            }
        });
        return XML_STATUS_OK;
    }

    // Runs the body of a handler. An exception must not propagate through Expat, which is C, so it is kept until Expat
    // has returned.
    template <class Action>
    static void handle(void* self, Action action) {
        auto& document = *static_cast<Document*>(self);
        if (document.failure_ != nullptr) return;
        try {
            action(document);
        } catch (...) {
            document.failure_ = std::current_exception();
            XML_StopParser(document.parser_.get(), XML_FALSE);
        }
    }

    // `attributes` are alternating names and values, ended by a null pointer.
    void startElement(const char* name, const char** attributes) {
        attributes_.clear();
        for (; *attributes != nullptr; attributes += 2) attributes_.push_back({attributes[0], attributes[1]});
        builder_.startElement(name, attributes_);
    }

    void checkVersion(const char* version) {
        if (version != nullptr && std::string_view(version) != "1.0")
            throw fault("XML version " + kest::quoted(version) + " is not supported, only \"1.0\"");
    }

    void checkEncoding(const char* encoding) {
        isDeclared_ = true;
        if (!form_.fits(encoding)) throw wrongEncoding(encoding);
        if (transcoder_) {
            if (form_.transcoded == nullptr && !kest::equalsIgnoringCase(encoding, encoding_))
                throw wrongEncoding(encoding_);
        } else if (ByteLayout::readByExpat(encoding)) {
            isLatin1_ = kest::equalsIgnoringCase(encoding, "ISO-8859-1");
        } else {
            otherEncoding_ = form_.transcoded != nullptr ? form_.transcoded : encoding;
            XML_StopParser(parser_.get(), XML_FALSE);
        }
    }

    void handleDoctype(const char* systemId) {
        if (settings_.refuseDoctype) throw fault("document type declaration refused");
        hasDoctype_ = true;
        XML_SetEntityDeclHandler(parser_.get(), onEntity);
        XML_SetAttlistDeclHandler(parser_.get(), onAttlist);
        XML_SetSkippedEntityHandler(parser_.get(), onSkipped);
        XML_SetExternalEntityRefHandler(parser_.get(), onExternal);
        const std::string loaded = "document type declaration: nothing external is loaded";
        warn(systemId == nullptr ? loaded : loaded + ", so " + kest::quoted(systemId) + " is left out");
    }

    void warn(const std::string& message) { sink_.onWarning(kest::String(kest::widen(message)), line()); }

    // The part of the document from the current position on that Expat has in memory; empty if not available.
    std::string_view input() const {
        int offset = 0;
        int size = 0;
        const char* const bytes = XML_GetInputContext(parser_.get(), &offset, &size);
        if (bytes == nullptr || offset > size) return {};
        return {bytes + offset, static_cast<std::size_t>(size - offset)};
    }

    std::string utf8Of(std::string_view bytes) const {
        return transcoder_ ? std::string(bytes) : form_.utf8Of(bytes, isLatin1_);
    }

    std::string currentTag() const {
        return utf8Of(input().substr(0, static_cast<std::size_t>(XML_GetCurrentByteCount(parser_.get()))));
    }

    // The default value of an attribute with its quotation marks. Expat reports only where it begins.
    std::string currentLiteral() const {
        const std::string_view bytes = input();
        const std::size_t unit = transcoder_ ? 1 : static_cast<std::size_t>(form_.unit);
        if (bytes.substr(0, unit).find_first_of("'\"") == std::string_view::npos) return {};
        std::size_t end = unit;
        while (end < bytes.size() && bytes.substr(end, unit) != bytes.substr(0, unit)) end += unit;
        return utf8Of(bytes.substr(0, end));
    }

    // Refuses a tree that was read with a guessed encoding.
    std::unique_ptr<Node> finished() {
        if (!isDeclared_ && transcoder_ && form_.transcoded == nullptr) throw wrongEncoding(encoding_);
        if (!isDeclared_ && !form_.marked && form_.unit != 1)
            throw Fault{"an encoding other than UTF-8 must be declared", 1};
        return builder_.takeRoot();
    }

    int line() const { return static_cast<int>(XML_GetCurrentLineNumber(parser_.get())); }

    Fault fault(std::string message) const { return Fault{std::move(message), line()}; }

    static Fault wrongEncoding(const std::string& declared) {
        return Fault{"the file is not in the encoding " + kest::quoted(declared) + " that it declares", 1};
    }

    [[noreturn]] void fail() {
        if (failure_ != nullptr) rethrow();
        const XML_Error code = XML_GetErrorCode(parser_.get());
        if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        if (!isDeclared_ && transcoder_ && form_.transcoded == nullptr) throw wrongEncoding(encoding_);
        throw fault(XML_ErrorString(code) + expectedAfter(code));
    }

    std::string expectedAfter(XML_Error code) const {
        const std::string expected(builder_.openName());
        const bool tells = code == XML_ERROR_TAG_MISMATCH || code == XML_ERROR_NO_ELEMENTS;
        return tells && !expected.empty() ? ", the end of " + kest::quoted(expected) + " is expected" : "";
    }

    [[noreturn]] void rethrow() {
        try {
            std::rethrow_exception(failure_);
        } catch (const DocumentTooLarge& tooLarge) {
            throw fault(tooLarge.what());
        }
    }

    struct FreeParser {
        void operator()(XML_ParserStruct* parser) const { XML_ParserFree(parser); }
    };

    const ReaderSettings& settings_;
    NodeSink& sink_;
    const ByteLayout& form_;
    const std::string& encoding_;
    std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
    std::optional<Transcoder> transcoder_;
    TreeBuilder builder_;
    std::vector<AttributeText> attributes_;  // of the current element
    LineFinder* finder_ = nullptr;
    bool isDeclared_ = false;  // the encoding
    bool isLatin1_ = false;
    std::string otherEncoding_;
    bool hasDoctype_ = false;
    EntityTable entities_{[this](const std::string& message) { warn(message); }};
    std::exception_ptr failure_;
};

class NullSink : public NodeSink {
  public:
    int onNodeTree(Node* /*root*/) override { return 0; }
};

// Builds no tree if there is a finder.
std::unique_ptr<Node> read(const ReaderSettings& settings, NodeSink& sink, DocumentFile& file,
                           LineFinder* finder) {
    char begin[4];
    const ByteLayout& form = ByteLayout::of({begin, file.peek(begin, sizeof begin)});
    std::string encoding = form.unit == 4 ? form.transcoded : "";
    for (;;) {
        Document document(settings, sink, form, encoding);
        if (finder != nullptr) document.sendTo(*finder);
        std::unique_ptr<Node> root = document.read(file);
        if (document.otherEncoding().empty()) return root;
        encoding = document.otherEncoding();
        file.rewind();
    }
}

// Null if the document must be read with Expat.
std::unique_ptr<Node> readPlain(const ReaderSettings& settings, DocumentFile& file) {
    if (settings.expandNamespaces) return nullptr;
    try {
        TreeBuilder builder(settings.keepWhitespace);
        return readPlainDocument(file, settings.blockSize, builder) ? builder.takeRoot() : nullptr;
    } catch (const DocumentTooLarge&) {
        return nullptr;
    }
}

}  // namespace

std::unique_ptr<Node> readDocument(const ReaderSettings& settings, NodeSink& sink, DocumentFile& file) {
    if (std::unique_ptr<Node> root = readPlain(settings, file)) return root;
    file.rewind();
    return readWithExpat(settings, sink, file);
}

std::unique_ptr<Node> readWithExpat(const ReaderSettings& settings, NodeSink& sink, DocumentFile& file) {
    return read(settings, sink, file, nullptr);
}

int findLine(const ReaderSettings& settings, DocumentFile& file, const NodePath& place) {
    LineFinder finder(place, settings.keepWhitespace);
    NullSink sink;
    try {
        read(settings, sink, file, &finder);
    } catch (const LineFinder::Found& found) {
        return found.line;
    }
    return 0;
}

}  // namespace tessa
