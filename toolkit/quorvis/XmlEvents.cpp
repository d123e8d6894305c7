#include "toolkit/quorvis/XmlEvents.h"

#include <expat.h>

#include <exception>
#include <limits>
#include <memory>
#include <new>

namespace toolkit::quorvis {

namespace {

constexpr int kDeepest = 64;

std::string_view localName(std::string_view name) {
    return name.substr(name.rfind(':') + 1);
}

// One document on its way through Expat.
class Reading {
  public:
    explicit Reading(XmlEvents& events) : events_(events), parser_(XML_ParserCreate(nullptr)) {
        if (parser_ == nullptr) throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
        XML_SetStartDoctypeDeclHandler(parser_.get(), onDoctype);
    }

    std::optional<XmlProblem> read(std::string_view document) {
        const bool done =
            XML_Parse(parser_.get(), document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
        if (failure_ != nullptr) std::rethrow_exception(failure_);
        if (problem_ || done) return problem_;
        const XML_Error error = XML_GetErrorCode(parser_.get());
        if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        refuse(EventCode::Parse, XML_ErrorString(error));
        return problem_;
    }

  private:
    static void XMLCALL onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        guarded(self, [=](Reading& reading) { reading.start(name, attributes); });
    }

    static void XMLCALL onEnd(void* self, const XML_Char* /*name*/) {
        guarded(self, [](Reading& reading) {
            --reading.depth_;
            reading.events_.end();
        });
    }

    static void XMLCALL onText(void* self, const XML_Char* text, int length) {
        guarded(self, [=](Reading& reading) {
            reading.events_.text(std::string_view(text, static_cast<std::size_t>(length)));
        });
    }

    static void XMLCALL onDoctype(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
        guarded(self, [](Reading& reading) {
            reading.refuse(EventCode::Parse, "document type declaration refused");
        });
    }

    // An exception must not fly through Expat, which is C: it is kept until Expat has returned.
    template <class Action>
    static void guarded(void* self, Action action) {
        auto& reading = *static_cast<Reading*>(self);
        if (reading.failure_ != nullptr || reading.problem_) return;
        try {
            action(reading);
        } catch (...) {
            reading.failure_ = std::current_exception();
            XML_StopParser(reading.parser_.get(), XML_FALSE);
        }
    }

    void start(const XML_Char* name, const XML_Char** attributes) {
        if (++depth_ > kDeepest) {
            refuse(EventCode::LimitDepth, "elements are nested deeper than 64");
        } else {
            events_.start(localName(name), XmlAttributes(attributes));
        }
    }

    void refuse(EventCode code, const std::string& what) {
        const auto line = std::to_string(XML_GetCurrentLineNumber(parser_.get()));
        const auto column = std::to_string(XML_GetCurrentColumnNumber(parser_.get()) + 1);
        problem_ = XmlProblem{code, "line " + line + ", column " + column + ": " + what};
        XML_StopParser(parser_.get(), XML_FALSE);
    }

    struct FreeParser {
        void operator()(XML_ParserStruct* parser) const { XML_ParserFree(parser); }
    };

    XmlEvents& events_;
    std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
    int depth_ = 0;
    std::optional<XmlProblem> problem_;
    std::exception_ptr failure_;
};

}  // namespace

std::optional<std::string_view> XmlAttributes::find(std::string_view name) const {
    for (const char* const* pair = pairs_; *pair != nullptr; pair += 2) {
        if (localName(*pair) == name) return pair[1];
    }
    return std::nullopt;
}

std::optional<XmlProblem> readXml(std::string_view document, XmlEvents& events) {
    if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return XmlProblem{EventCode::LimitBytes, "the document is larger than 2 GiB"};
    return Reading(events).read(document);
}

}  // namespace toolkit::quorvis
