#include <yaml.h>

#include <map>
#include <new>

#include "toolkit/quorvis/formats/Records.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxAnchors = 1'000;
constexpr std::size_t kMaxAnchoredText = std::size_t{1} << 10;

std::string_view textOf(const yaml_char_t* text) {
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

std::string placeOf(const yaml_mark_t& mark) {
    return "line " + std::to_string(mark.line + 1) + ", column " + std::to_string(mark.column + 1);
}

class Event {
  public:
    Event() = default;
    ~Event() { yaml_event_delete(&event_); }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    yaml_event_t* get() { return &event_; }
    const yaml_event_t* operator->() const { return &event_; }

  private:
    yaml_event_t event_{};
};

class Reader {
  public:
    Reader(std::string_view text, const RecordRequest& request, const ProgressCheck& checkProgress)
        : collector_(request, checkProgress) {
        if (yaml_parser_initialize(&parser_) == 0) throw std::bad_alloc();
        yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(text.data()),
                                     text.size());
    }
    ~Reader() { yaml_parser_delete(&parser_); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    Records read() {
        for (bool more = true; more;) {
            Event event;
            if (yaml_parser_parse(&parser_, event.get()) == 0) {
                reportError();
                break;
            }
            more = event->type != YAML_STREAM_END_EVENT && take(*event.get());
        }
        return collector_.takeRecords();
    }

  private:
    struct Container {
        bool object = false;
        bool keyNext = false;  // of an object
    };

    void reportError() {
        if (parser_.error == YAML_MEMORY_ERROR) throw std::bad_alloc();
        collector_.setProblem("damaged YAML, " + placeOf(parser_.problem_mark));
    }

    bool isKeyNext() const { return !open_.empty() && open_.back().keyNext; }

    // False if the rest cannot be read.
    bool take(const yaml_event_t& event) {
        switch (event.type) {
            case YAML_SCALAR_EVENT:
                takeScalar(event);
                return true;
            case YAML_ALIAS_EVENT:
                return takeAlias(event);
            case YAML_MAPPING_START_EVENT:
                return open(event, true);
            case YAML_SEQUENCE_START_EVENT:
                return open(event, false);
            case YAML_MAPPING_END_EVENT:
            case YAML_SEQUENCE_END_EVENT:
                open_.pop_back();
                collector_.close();
                passNode();
                return true;
            case YAML_DOCUMENT_END_EVENT:
                anchors_.clear();
                return true;
            default:
                return true;
        }
    }

    // Objects contain keys and values in turn.
    void passNode() {
        if (!open_.empty()) open_.back().keyNext = open_.back().object;
    }

    void takeKey(std::string_view text, const yaml_mark_t& mark) {
        // A merge key adds the members of another object.
        if (text == "<<" && collector_.wantsMembers())
            collector_.setProblem("an alias is not followed, " + placeOf(mark));
        collector_.key(text);
        open_.back().keyNext = false;
    }

    void takeScalar(const yaml_event_t& event) {
        const auto& scalar = event.data.scalar;
        const std::string_view text(reinterpret_cast<const char*>(scalar.value), scalar.length);
        remember(textOf(scalar.anchor), text);
        if (isKeyNext()) {
            takeKey(text, event.start_mark);
            return;
        }
        const bool plain = scalar.style == YAML_PLAIN_SCALAR_STYLE && scalar.tag == nullptr;
        const bool null =
            plain && (text.empty() || text == "~" || text == "null" || text == "Null" || text == "NULL");
        collector_.scalar(null ? std::nullopt : std::optional(text));
        passNode();
    }

    // Long texts are not kept, so that few bytes cannot become many.
    void remember(std::string_view anchor, std::string_view text) {
        if (anchor.empty()) return;
        anchors_.erase(std::string(anchor));
        if (anchors_.size() < kMaxAnchors && text.size() <= kMaxAnchoredText) anchors_.emplace(anchor, text);
    }

    bool takeAlias(const yaml_event_t& event) {
        const auto found = anchors_.find(std::string(textOf(event.data.alias.anchor)));
        if (isKeyNext()) {
            if (found == anchors_.end()) return refuseKey(event);
            takeKey(found->second, event.start_mark);
            return true;
        }
        if (found != anchors_.end()) {
            collector_.scalar(found->second);
        } else {
            if (collector_.wantsNext())
                collector_.setProblem("an alias is not followed, " + placeOf(event.start_mark));
            collector_.scalar(std::nullopt);
        }
        passNode();
        return true;
    }

    bool refuseKey(const yaml_event_t& event) {
        collector_.setProblem("a key is not a text, " + placeOf(event.start_mark));
        return false;
    }

    bool open(const yaml_event_t& event, bool object) {
        if (isKeyNext()) return refuseKey(event);
        const auto* const anchor =
            object ? event.data.mapping_start.anchor : event.data.sequence_start.anchor;
        if (anchor != nullptr) anchors_.erase(std::string(textOf(anchor)));
        if (!collector_.open(!object)) return false;
        open_.push_back({object, object});
        return true;
    }

    yaml_parser_t parser_{};
    RecordCollector collector_;
    std::vector<Container> open_;
    std::map<std::string, std::string> anchors_;  // of scalars
};

}  // namespace

Records readYamlRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress) {
    return Reader(text, request, checkProgress).read();
}

}  // namespace toolkit::quorvis
