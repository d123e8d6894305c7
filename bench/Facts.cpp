#include "bench/Facts.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

namespace zavbench {

namespace {

using nlohmann::json;

double factsIn(const json& value) {
    if (value.is_null()) return 0;
    if (value.is_string()) return value.get_ref<const std::string&>().empty() ? 0 : 1;
    if (!value.is_structured()) return 1;
    const bool named = value.is_object() && value.contains("field") && value.contains("data");
    double facts = named ? -factsIn(value["field"]) : 0;
    for (const json& part : value) facts += factsIn(part);
    return facts;
}

// The number of places where `part` begins.
double occurrences(std::string_view text, std::string_view part) {
    double count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

}  // namespace

double factsInXml(std::string_view text) {
    double facts = 0;
    for (std::size_t at = text.find("</"); at != std::string_view::npos; at = text.find("</", at + 1))
        facts += at > 0 && text[at - 1] != '>' ? 1 : 0;
    return facts;
}

double factsInJson(std::string_view text) {
    return factsIn(json::parse(text));
}

double factsAfterColons(std::string_view text) {
    return occurrences(text, ": ");
}

double factsInColumns(std::string_view text) {
    double facts = 0;
    bool within = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool blank = text[i] == ' ' || text[i] == '\t' || text[i] == '\n';
        const bool pair = i + 1 < text.size() && text[i] == ' ' && text[i + 1] != ' ' && text[i + 1] != '\n';
        if (blank && within && pair) continue;  // a single blank is part of a text
        if (!blank && !within) ++facts;
        within = !blank;
    }
    return facts;
}

}  // namespace zavbench
