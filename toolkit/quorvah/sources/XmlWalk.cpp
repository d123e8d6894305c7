#include "toolkit/quorvah/sources/XmlWalk.h"

#include <expat.h>

#include <exception>
#include <memory>
#include <new>
#include <type_traits>

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxDepth = 64;
constexpr std::size_t kMaxText = std::size_t{64} << 10;
constexpr std::size_t kMaxPath = 4096;

struct Walk {
    XML_Parser parser = nullptr;
    const XmlHandler* handler = nullptr;
    std::string path;
    std::size_t depth = 0;
    std::string text;  // of the innermost element, since its last child
    std::exception_ptr failure;
};

void stop(Walk& walk) {
    XML_StopParser(walk.parser, XML_FALSE);
}

// No exception may pass through the library.
template <class Action>
void guarded(Walk& walk, const Action& action) {
    if (walk.failure) return;
    try {
        action();
    } catch (...) {
        walk.failure = std::current_exception();
        stop(walk);
    }
}

void onBegin(void* data, const char* name, const char** attributes) {
    Walk& walk = *static_cast<Walk*>(data);
    guarded(walk, [&] {
        walk.text.clear();
        if (walk.depth == kMaxDepth || walk.path.size() + std::string_view(name).size() > kMaxPath)
            return stop(walk);
        ++walk.depth;
        if (!walk.path.empty()) walk.path += '/';
        walk.path += name;
        if (walk.handler->begin) walk.handler->begin(walk.path, XmlAttributes(attributes));
    });
}

void onEnd(void* data, const char* name) {
    Walk& walk = *static_cast<Walk*>(data);
    guarded(walk, [&] {
        if (walk.handler->end) walk.handler->end(walk.path, walk.text);
        walk.text.clear();
        --walk.depth;
        const std::size_t length = std::string_view(name).size();
        walk.path.resize(walk.path.size() > length ? walk.path.size() - length - 1 : 0);
    });
}

void onText(void* data, const char* text, int length) {
    Walk& walk = *static_cast<Walk*>(data);
    guarded(walk, [&] {
        walk.text.append(text, static_cast<std::size_t>(length));
        if (walk.text.size() > kMaxText) stop(walk);
    });
}

void onDoctype(void* data, const char* /*name*/, const char* /*system*/, const char* /*public*/,
               int /*internal*/) {
    stop(*static_cast<Walk*>(data));
}

}  // namespace

std::string_view XmlAttributes::value(std::string_view name) const {
    for (const char* const* pair = pairs_; pair != nullptr && *pair != nullptr; pair += 2) {
        if (name == *pair) return *(pair + 1);
    }
    return {};
}

bool walkXml(std::string_view document, const XmlHandler& handler) {
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), &XML_ParserFree);
    if (!parser) throw std::bad_alloc();
    Walk walk;
    walk.parser = parser.get();
    walk.handler = &handler;
    XML_SetUserData(parser.get(), &walk);
    XML_SetElementHandler(parser.get(), onBegin, onEnd);
    XML_SetCharacterDataHandler(parser.get(), onText);
    XML_SetStartDoctypeDeclHandler(parser.get(), onDoctype);
    const XML_Status status =
        XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
    if (walk.failure) std::rethrow_exception(walk.failure);
    if (XML_GetErrorCode(parser.get()) == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    return status == XML_STATUS_OK;
}

}  // namespace toolkit::quorvah
