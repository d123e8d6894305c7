#include "toolkit/quorvis/formats/XmlEvents.h"

#include <limits>

#include "toolkit/quorvis/formats/XmlParser.h"

namespace toolkit::quorvis {

namespace {

constexpr unsigned kDeepest = 64;

std::string_view localName(std::string_view name) {
    return name.substr(name.rfind(':') + 1);
}

class Forwarder : public XmlHandler {
  public:
    Forwarder(XmlEvents& events, const Tick& tick) : events_(events), tick_(tick) {}

    void onStart(std::string_view name, const char* const* attributes, std::size_t /*offset*/) override {
        tick();
        events_.start(localName(name), XmlAttributes(attributes));
    }
    void onEnd() override { events_.end(); }
    void onText(std::string_view text, std::size_t /*offset*/) override {
        tick();
        events_.text(text);
    }

  private:
    void tick() const {
        if (tick_) tick_();
    }

    XmlEvents& events_;
    const Tick& tick_;
};

}  // namespace

std::optional<std::string_view> XmlAttributes::find(std::string_view name) const {
    for (const char* const* pair = pairs_; *pair != nullptr; pair += 2) {
        if (localName(*pair) == name) return pair[1];
    }
    return std::nullopt;
}

std::optional<std::string> readXml(std::string_view document, XmlEvents& events, const Tick& tick) {
    if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return "the document is larger than 2 GiB";
    // What is not UTF-8 says so itself.
    const DocumentText text{std::string(document), true, {}};
    Forwarder forwarder(events, tick);
    const std::optional<XmlFault> fault = parseXml(text, kDeepest, forwarder);
    if (!fault) return std::nullopt;
    const TextPlace place = placeIn(text, fault->offset);
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column) + ": " +
           fault->text;
}

}  // namespace toolkit::quorvis
