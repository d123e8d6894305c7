#include "toolkit/quorvah/report/OutputDocument.h"

#include <array>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/machine/xml/XmlText.h"

namespace toolkit::quorvah {

namespace {

void breakLine(std::string& xml, std::size_t depth, bool pretty) {
    if (pretty) xml.append("\n").append(2 * depth, ' ');
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) text += part;
    return text;
}

// Writes the instances of one group. The tags are built once per group.
class InstanceWriter {
  public:
    InstanceWriter(const Group& group, bool pretty) {
        std::string ahead;  // the end tag of the previous field
        std::string line;   // the line break and indentation before a field
        breakLine(line, 2, pretty);
        for (const schema::Field& field : group.fields) {
            fields_.push_back(
                {tagOf(ahead, {line, "<", field.name, ">"}), tagOf(ahead, {line, "<", field.name, "/>"})});
            ahead = joined({"</", field.name, ">"});
        }
        line.clear();
        breakLine(line, 1, pretty);
        open_ = joined({line, "<", group.xmlName, ">"});
        close_ = tagOf(ahead, {line, "</", group.xmlName, ">"});
    }

    void write(std::string& xml, const Instance& instance) const {
        xml += open_;
        const auto values = instance.values();
        bool open = false;  // whether the end tag of the previous field is still to be written
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            const bool before = std::exchange(open, !values[i].empty());
            xml += (open ? fields_[i].open : fields_[i].empty)[before ? 1 : 0];
            if (open) appendXmlText(xml, values[i]);
        }
        xml += close_[open ? 1 : 0];
    }

  private:
    // A tag with the line break before it: without and with the end tag of the previous field.
    using Tag = std::array<std::string, 2>;
    struct Tags {
        Tag open;
        Tag empty;
    };

    static Tag tagOf(std::string_view ahead, std::initializer_list<std::string_view> parts) {
        const std::string tag = joined(parts);
        return {tag, joined({ahead, tag})};
    }

    std::vector<Tags> fields_;
    std::string open_;
    Tag close_;
};

// The approximate size of the XML, to avoid reallocations.
std::size_t sizeHint(const GroupData& data) {
    std::size_t tags = 0;
    for (const schema::Field& field : data.group().fields) tags += 2 * field.name.size() + 16;
    std::size_t size = data.instances().size() * (tags + 64);
    for (const Instance& instance : data.instances()) {
        for (const std::string_view value : instance.values()) size += value.size();
    }
    return size;
}

// Collects text and passes it to the sink in blocks that fit into the processor's cache. Writing to memory that is
// used for the first time is slower.
class TextBlock {
  public:
    explicit TextBlock(const TextSink& sink) : sink_(sink) { text.reserve(kSize + kSize / 4); }

    void add(const GroupData& data, bool pretty) {
        const InstanceWriter writer(data.group(), pretty);
        const auto& instances = data.instances();
        for (std::size_t i = 0; i < instances.size(); ++i) {
            if (i + kAhead < instances.size()) fetch(instances[i + kAhead]);
            writer.write(text, instances[i]);
            if (text.size() >= kSize) flush();
        }
    }
    void add(std::string_view rendered) {
        if (rendered.empty()) return;
        flush();
        sink_(rendered);
    }
    void flush() {
        sink_(text);
        text.clear();
    }

    std::string text;

  private:
    static constexpr std::size_t kSize = std::size_t{64} << 10;
    static constexpr std::size_t kAhead = 2;  // instances

    // Prefetches values that are needed soon. Many of them are parts of a large file and far from each other.
    static void fetch(const Instance& instance) {
        for (const std::string_view value : instance.values()) __builtin_prefetch(value.data());
    }

    const TextSink& sink_;
};

}  // namespace

GroupResult render(const GroupData& data, bool pretty) {
    const auto xml = std::make_shared<std::string>();
    xml->reserve(sizeHint(data));
    const InstanceWriter writer(data.group(), pretty);
    for (const Instance& instance : data.instances()) writer.write(*xml, instance);
    GroupResult result = resultWithoutXml(data);
    result.xml = *xml;
    result.memory = xml;
    return result;
}

void writeDocument(std::span<const GroupResult> results, bool pretty, const TextSink& sink) {
    TextBlock block(sink);
    block.text = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    block.text += pretty ? "\n<Hardware>" : "<Hardware>";
    for (const GroupResult& result : results) {
        if (result.data) block.add(*result.data, pretty);
        block.add(result.xml);
    }
    block.text += pretty ? "\n</Hardware>\n" : "</Hardware>";
    block.flush();
}

}  // namespace toolkit::quorvah
