#include "toolkit/quorvah/OutputDocument.h"

#include "toolkit/quorvah/XmlText.h"

namespace quorvah {

namespace {

class Document {
  public:
    explicit Document(bool pretty) : pretty_(pretty) {}

    void write(std::span<const Report> reports) {
        text_ += R"(<?xml version="1.0" encoding="UTF-8"?>)";
        breakLine(0);
        text_ += "<Hardware>";
        for (const Report& report : reports) {
            for (const Instance& instance : report.instances()) writeInstance(report.group(), instance);
        }
        breakLine(0);
        text_ += "</Hardware>";
        breakLine(0);
    }

    std::string take() { return std::move(text_); }

  private:
    void writeInstance(const Group& group, const Instance& instance) {
        breakLine(1);
        text_.append("<").append(group.xmlName).append(">");
        for (std::size_t i = 0; i < group.fields.size(); ++i) {
            writeField(group.fields[i].name, instance.values()[i]);
        }
        breakLine(1);
        text_.append("</").append(group.xmlName).append(">");
    }

    void writeField(const char* name, const std::string& value) {
        breakLine(2);
        if (value.empty()) {
            text_.append("<").append(name).append("/>");
            return;
        }
        text_.append("<").append(name).append(">");
        appendXmlText(text_, value);
        text_.append("</").append(name).append(">");
    }

    void breakLine(std::size_t depth) {
        if (pretty_) text_.append("\n").append(2 * depth, ' ');
    }

    bool pretty_;
    std::string text_;
};

}  // namespace

std::string outputDocument(std::span<const Report> reports, bool pretty) {
    Document document(pretty);
    document.write(reports);
    return document.take();
}

}  // namespace quorvah
