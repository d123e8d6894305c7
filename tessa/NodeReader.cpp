#include "tessa/NodeReader.h"

#include <expat.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include "kest/Text.h"
#include "tessa/Encoding.h"
#include "tessa/TreeBuilder.h"

namespace tessa {

namespace {

constexpr int kBlockSize = 64 << 10;

// Expat looks at an unfinished token anew with every block, so an endless comment or attribute would cost
// quadratic time.
constexpr XML_Index kLongestToken = XML_Index{4} << 20;

// Expat expands an entity that names another by recursion, so a long chain of them would exhaust the stack.
constexpr int kMostEntities = 64;

// Something is wrong with the document or its file; what and where.
struct Fault {
    std::string message;
    int line;
};

class File {
  public:
    explicit File(const char* path) {
        do {
            descriptor_ = ::open(path, O_RDONLY | O_CLOEXEC);
        } while (descriptor_ < 0 && errno == EINTR);
    }
    ~File() {
        if (isOpen()) ::close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }

    // The number of bytes read, 0 at the end of the file, -1 after an error.
    int read(void* buffer, int size) const {
        for (;;) {
            const ssize_t count = ::read(descriptor_, buffer, static_cast<std::size_t>(size));
            if (count >= 0 || errno != EINTR) return static_cast<int>(count);
        }
    }

  private:
    int descriptor_ = -1;
};

// One document on its way from Expat into a tree.
class Document {
  public:
    Document(const NodeReader& settings, NodeSink& sink)
        : settings_(settings),
          sink_(sink),
          parser_(settings.expandNamespaces ? XML_ParserCreateNS(nullptr, '|') : XML_ParserCreate(nullptr)),
          builder_(settings.keepWhitespace) {
        if (parser_ == nullptr) throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
        XML_SetStartDoctypeDeclHandler(parser_.get(), onDoctype);
        XML_SetEntityDeclHandler(parser_.get(), onEntity);
        XML_SetUnknownEncodingHandler(parser_.get(), onEncoding, this);
    }

    // Throws Fault for what is wrong with the document, std::bad_alloc when memory runs out.
    std::unique_ptr<Node> read(const File& file) {
        const int blockSize = settings_.blockSize > 0 ? settings_.blockSize : kBlockSize;
        for (XML_Index given = 0;;) {
            void* const block = XML_GetBuffer(parser_.get(), blockSize);
            if (block == nullptr) fail();
            const int count = file.read(block, blockSize);
            if (count < 0) throw Fault{std::string("cannot read: ") + std::strerror(errno), 0};
            if (XML_ParseBuffer(parser_.get(), count, count == 0 ? 1 : 0) != XML_STATUS_OK) fail();
            if (count == 0) return builder_.takeRoot();
            given += count;
            if (given - XML_GetCurrentByteIndex(parser_.get()) > kLongestToken) throw fault("token too long");
        }
    }

  private:
    static void XMLCALL onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        guarded(self, [=](Document& document) { document.builder_.startElement(name, attributes); });
    }

    static void XMLCALL onEnd(void* self, const XML_Char* /*name*/) {
        guarded(self, [](Document& document) { document.builder_.endElement(); });
    }

    static void XMLCALL onText(void* self, const XML_Char* text, int length) {
        guarded(self,
                [=](Document& document) { document.builder_.text(text, static_cast<std::size_t>(length)); });
    }

    static void XMLCALL onDoctype(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
        guarded(self, [](Document& document) { document.meetDoctype(); });
    }

    static void XMLCALL onEntity(void* self, const XML_Char* /*name*/, int /*isParameter*/,
                                 const XML_Char* /*value*/, int /*length*/, const XML_Char* /*base*/,
                                 const XML_Char* /*systemId*/, const XML_Char* /*publicId*/,
                                 const XML_Char* /*notation*/) {
        guarded(self, [](Document& document) { document.meetEntity(); });
    }

    static int XMLCALL onEncoding(void* self, const XML_Char* name, XML_Encoding* encoding) {
        bool known = false;
        guarded(self, [&](Document& /*unused*/) { known = useSystemEncoding(name, *encoding); });
        return known ? XML_STATUS_OK : XML_STATUS_ERROR;
    }

    // An exception must not fly through Expat, which is C: it is kept until Expat has returned.
    template <class Action>
    static void guarded(void* self, Action action) {
        auto& document = *static_cast<Document*>(self);
        if (document.failure_ != nullptr) return;
        try {
            action(document);
        } catch (...) {
            document.failure_ = std::current_exception();
            XML_StopParser(document.parser_.get(), XML_FALSE);
        }
    }

    void meetDoctype() {
        if (settings_.refuseDoctype) throw fault("document type declaration refused");
        sink_.onWarning(kest::String(L"document type declaration has no effect"), line());
    }

    void meetEntity() {
        if (++entities_ > kMostEntities) throw fault("too many entities");
    }

    int line() const { return static_cast<int>(XML_GetCurrentLineNumber(parser_.get())); }

    Fault fault(const char* message) const { return Fault{message, line()}; }

    [[noreturn]] void fail() {
        if (failure_ != nullptr) rethrow();
        const XML_Error code = XML_GetErrorCode(parser_.get());
        if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        throw fault(XML_ErrorString(code));
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

    const NodeReader& settings_;
    NodeSink& sink_;
    std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
    TreeBuilder builder_;
    int entities_ = 0;
    std::exception_ptr failure_;
};

std::unique_ptr<Node> readFile(const NodeReader& settings, NodeSink& sink, const char* path) {
    const File file(path);
    if (!file.isOpen() && errno == ENOMEM) throw std::bad_alloc();
    if (!file.isOpen()) throw Fault{std::string("cannot open: ") + std::strerror(errno), 0};
    return Document(settings, sink).read(file);
}

}  // namespace

int NodeReader::process(const kest::String& path, int /*reserved*/) {
    status = 1;
    try {
        std::unique_ptr<Node> root = readFile(*this, sink_, kest::narrow(path.view()).c_str());
        status = 0;
        sink_.onNodeTree(root.release());
    } catch (const Fault& fault) {
        sink_.onCriticalError(kest::String(kest::widen(fault.message)), fault.line);
    }
    return status;
}

}  // namespace tessa
