#include "cli/formats/YamlWriter.h"

#include <yaml.h>

#include <algorithm>
#include <array>
#include <new>
#include <nlohmann/json.hpp>
#include <string_view>

#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

// All other scalars that are not strings begin with a digit, a sign, a point or a tilde.
constexpr std::array<std::string_view, 9> kWords{"y", "n", "yes", "no", "on", "off", "true", "false", "null"};

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isPlain(std::string_view text) {
    if (text.empty() || (!isLetter(text.front()) && text.front() != '/')) return false;
    if (text.find('\n') != std::string_view::npos) return false;
    return std::ranges::find(kWords, lowerCase(text)) == kWords.end();
}

class Emitter {
  public:
    Emitter() {
        if (yaml_emitter_initialize(&emitter_) == 0) throw std::bad_alloc();
        yaml_emitter_set_output(&emitter_, append, &text_);
        yaml_emitter_set_unicode(&emitter_, 1);
        constexpr int kUnlimited = -1;
        yaml_emitter_set_width(&emitter_, kUnlimited);
    }
    ~Emitter() { yaml_emitter_delete(&emitter_); }
    Emitter(const Emitter&) = delete;
    Emitter& operator=(const Emitter&) = delete;

    std::string write(const Json& document) {
        emit([](auto* event) { return yaml_stream_start_event_initialize(event, YAML_UTF8_ENCODING); });
        emit([](auto* event) {
            return yaml_document_start_event_initialize(event, nullptr, nullptr, nullptr, 1);
        });
        value(document);
        emit([](auto* event) { return yaml_document_end_event_initialize(event, 1); });
        emit([](auto* event) { return yaml_stream_end_event_initialize(event); });
        return std::move(text_);
    }

  private:
    // Must not throw through the library.
    static int append(void* text, unsigned char* bytes, std::size_t count) noexcept {
        try {
            static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
            return 1;
        } catch (const std::bad_alloc&) {
            return 0;
        }
    }

    // The document is valid UTF-8 and well-nested, so only memory can be lacking.
    template <typename Initialize>
    void emit(const Initialize& initialize) {
        yaml_event_t event;
        if (initialize(&event) == 0 || yaml_emitter_emit(&emitter_, &event) == 0) throw std::bad_alloc();
    }

    void scalar(const std::string& text, yaml_scalar_style_t style) {
        auto* const bytes = reinterpret_cast<const yaml_char_t*>(text.data());
        emit([&](auto* event) {
            return yaml_scalar_event_initialize(event, nullptr, nullptr, bytes, static_cast<int>(text.size()),
                                                1, 1, style);
        });
    }
    void string(const std::string& text) {
        scalar(text, isPlain(text) ? YAML_PLAIN_SCALAR_STYLE : YAML_DOUBLE_QUOTED_SCALAR_STYLE);
    }

    void value(const Json& json) {
        if (json.is_object()) {
            emit([](auto* event) {
                return yaml_mapping_start_event_initialize(event, nullptr, nullptr, 1,
                                                           YAML_BLOCK_MAPPING_STYLE);
            });
            for (const auto& [name, member] : json.items()) {
                string(name);
                value(member);
            }
            emit([](auto* event) { return yaml_mapping_end_event_initialize(event); });
        } else if (json.is_array()) {
            emit([](auto* event) {
                return yaml_sequence_start_event_initialize(event, nullptr, nullptr, 1,
                                                            YAML_BLOCK_SEQUENCE_STYLE);
            });
            for (const Json& item : json) value(item);
            emit([](auto* event) { return yaml_sequence_end_event_initialize(event); });
        } else if (json.is_string()) {
            string(json.get_ref<const std::string&>());
        } else {
            scalar(json.dump(), YAML_PLAIN_SCALAR_STYLE);
        }
    }

    yaml_emitter_t emitter_{};
    std::string text_;
};

}  // namespace

std::string yamlText(const std::string& json) {
    return Emitter().write(Json::parse(json));
}

}  // namespace zavcli
