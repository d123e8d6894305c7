#include "toolkit/quorvah/OutputDocument.h"

#include <memory>
#include <string>
#include <vector>

#include "toolkit/machine/XmlText.h"

namespace toolkit::quorvah {

namespace {

void breakLine(std::string& xml, std::size_t depth, bool pretty) {
    if (pretty) xml.append("\n").append(2 * depth, ' ');
}

// The instances of one group.
class InstanceWriter {
  public:
    InstanceWriter(const Group& group, bool pretty) {
        for (const FieldDef& field : group.fields) {
            Tags& tags = fields_.emplace_back();
            breakLine(tags.open, 2, pretty);
            tags.open.append("<").append(field.name).append(">");
            breakLine(tags.empty, 2, pretty);
            tags.empty.append("<").append(field.name).append("/>");
            tags.close.append("</").append(field.name).append(">");
        }
        breakLine(whole_.open, 1, pretty);
        whole_.open.append("<").append(group.xmlName).append(">");
        breakLine(whole_.close, 1, pretty);
        whole_.close.append("</").append(group.xmlName).append(">");
    }

    void write(std::string& xml, const Instance& instance) const {
        xml += whole_.open;
        for (std::size_t i = 0; i < fields_.size(); ++i) writeField(xml, fields_[i], instance.values()[i]);
        xml += whole_.close;
    }

  private:
    // With the line breaks before them.
    struct Tags {
        std::string open;
        std::string close;
        std::string empty;
    };

    static void writeField(std::string& xml, const Tags& tags, std::string_view value) {
        if (value.empty()) {
            xml += tags.empty;
            return;
        }
        xml += tags.open;
        appendXmlText(xml, value);
        xml += tags.close;
    }

    std::vector<Tags> fields_;
    Tags whole_;
};

// About the size of the instances' xml, so that it need not be moved while it grows.
std::size_t sizeHint(const Report& report) {
    std::size_t tags = 0;
    for (const FieldDef& field : report.group().fields) tags += 2 * field.name.size() + 16;
    std::size_t size = report.instances().size() * (tags + 64);
    for (const Instance& instance : report.instances()) {
        for (const std::string_view value : instance.values()) size += value.size();
    }
    return size;
}

}  // namespace

GroupResult render(const Report& report, bool pretty) {
    const auto xml = std::make_shared<std::string>();
    xml->reserve(sizeHint(report));
    const InstanceWriter writer(report.group(), pretty);
    for (const Instance& instance : report.instances()) writer.write(*xml, instance);
    return {&report.group(), *xml, xml, report.instances().size(), report.reason(), report.warnings(),
            report.elapsed()};
}

std::vector<std::string_view> outputDocument(std::span<const GroupResult> results, bool pretty) {
    constexpr std::string_view kStart = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    std::vector<std::string_view> pieces{kStart, pretty ? "\n<Hardware>" : "<Hardware>"};
    for (const GroupResult& result : results) pieces.push_back(result.xml);
    pieces.emplace_back(pretty ? "\n</Hardware>\n" : "</Hardware>");
    return pieces;
}

}  // namespace toolkit::quorvah
