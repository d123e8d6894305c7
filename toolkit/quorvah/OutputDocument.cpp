#include "toolkit/quorvah/OutputDocument.h"

#include <cstring>

#include "toolkit/machine/XmlText.h"

namespace toolkit::quorvah {

namespace {

void breakLine(std::string& xml, std::size_t depth, bool pretty) {
    if (pretty) xml.append("\n").append(2 * depth, ' ');
}

// The instances of one group.
class InstanceWriter {
  public:
    InstanceWriter(const Group& group, bool pretty)
        : group_(group), pretty_(pretty), start_("<"), end_("</") {
        start_.append(group.xmlName).append(">");
        end_.append(group.xmlName).append(">");
    }

    void write(std::string& xml, const Instance& instance) const {
        breakLine(xml, 1, pretty_);
        xml += start_;
        for (std::size_t i = 0; i < group_.fields.size(); ++i) {
            writeField(xml, group_.fields[i].name, instance.values()[i]);
        }
        breakLine(xml, 1, pretty_);
        xml += end_;
    }

  private:
    void writeField(std::string& xml, std::string_view name, const std::string& value) const {
        breakLine(xml, 2, pretty_);
        xml.append("<").append(name);
        if (value.empty()) {
            xml.append("/>");
            return;
        }
        xml.append(">");
        appendXmlText(xml, value);
        xml.append("</").append(name).append(">");
    }

    const Group& group_;
    bool pretty_;
    std::string start_;
    std::string end_;
};

// About the size of the instances' xml, so that it need not be moved while it grows.
std::size_t sizeHint(const Report& report) {
    std::size_t tags = 0;
    for (const FieldDef& field : report.group().fields) tags += 2 * std::strlen(field.name) + 16;
    std::size_t size = report.instances().size() * (tags + 64);
    for (const Instance& instance : report.instances()) {
        for (const std::string& value : instance.values()) size += value.size();
    }
    return size;
}

}  // namespace

GroupResult render(const Report& report, bool pretty) {
    GroupResult result{&report.group(), {}, report.instances().size(), report.reason(), report.warnings(),
                       report.elapsed()};
    result.xml.reserve(sizeHint(report));
    const InstanceWriter writer(report.group(), pretty);
    for (const Instance& instance : report.instances()) writer.write(result.xml, instance);
    return result;
}

std::string outputDocument(std::span<const GroupResult> results, bool pretty) {
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    std::size_t size = xml.size() + 64;
    for (const GroupResult& result : results) size += result.xml.size();
    xml.reserve(size);
    breakLine(xml, 0, pretty);
    xml += "<Hardware>";
    for (const GroupResult& result : results) xml += result.xml;
    breakLine(xml, 0, pretty);
    xml += "</Hardware>";
    breakLine(xml, 0, pretty);
    return xml;
}

}  // namespace toolkit::quorvah
