#include "cli/Warnings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/Element.h"

namespace zavcli {

Warning readWarning(const std::string& xml) {
    std::optional<Element> element = readElement(xml);
    if (!element) return {{}, xml};
    // One that says nothing in words and attributes alone is shown as it is.
    if (element->text.empty() && element->attributes.empty()) return {{}, xml};
    return {std::move(element->attributes), std::move(element->text)};
}

std::string warningText(const Warning& warning) {
    const Element element{"Event", warning.attributes, warning.text, {}};
    std::string text = element.attribute("severity") == "info" ? "note: " : "warning: ";
    const std::string path = element.attribute("path");
    const std::string what = warning.text.empty() ? element.attribute("code") : warning.text;
    if (!path.empty() && !what.starts_with(path)) text += path + ": ";
    text += what;

    std::vector<std::string> where;
    const std::string guid = element.attribute("guid");
    const std::string leaf = element.attribute("leaf");
    const std::string count = element.attribute("count");
    if (!guid.empty()) where.push_back("signature " + guid);
    if (!leaf.empty()) where.push_back("leaf " + leaf);
    if (!count.empty() && count != "1") where.push_back(count + " times");
    if (!where.empty()) text += fmt::format(" ({})", fmt::join(where, ", "));
    return text;
}

}  // namespace zavcli
