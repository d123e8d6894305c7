#include "hw/HWPlainOutput.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "kest/Text.h"
#include "tessa/DocumentFile.h"
#include "tessa/PlainReader.h"

namespace zav {

namespace {

bool isLayout(std::string_view text) {
    return text.find_first_not_of(" \t\n\r") == std::string_view::npos;
}

// Fills the tables with the instances and fields of a document.
class TableFiller final : public tessa::PlainSink {
  public:
    explicit TableFiller(HWTables& tables) : tables_(tables), texts_(tables.texts()) {}

    bool startElement(std::string_view name,
                      const std::vector<tessa::AttributeText>& /*attributes*/) override {
        if (open_.size() == kFieldDepth || !dropLayout(true)) return false;
        const tessa::TextStore::Name& stored = *texts_.intern(name);
        if (open_.size() == kInstanceDepth - 1 && !startInstance(stored)) return false;
        open_.push_back({&stored, false});
        return true;
    }

    bool endElement() override {
        if (open_.size() == kFieldDepth) {
            instance_.fields.push_back({open_.back().name->text.text(), takeValue()});
        } else if (!dropLayout(false)) {
            return false;
        } else if (open_.size() == kInstanceDepth) {
            tables_.add(group_, instance_);
            ++instances_;
        }
        open_.pop_back();
        return true;
    }

    bool text(std::string_view piece) override {
        texts_.append(piece.data(), piece.size());
        return open_.size() == kFieldDepth || isLayout(piece);
    }

    std::string_view openName() const override { return open_.back().name->utf8; }
    std::string_view expectedName() const override { return texts_.expectedName(); }

    int instances() const { return instances_; }

  private:
    static constexpr std::size_t kInstanceDepth = 2;
    static constexpr std::size_t kFieldDepth = 3;

    struct Open {
        const tessa::TextStore::Name* name;
        bool hasElements;
    };

    bool startInstance(const tessa::TextStore::Name& name) {
        if (&name != groupName_) {
            groupName_ = &name;
            group_ = HW_getGroupId(name.text.text());
        }
        instance_.fields.clear();
        return group_ >= kFirstGroup;
    }

    // Drops white space between elements. False if it is the only content of an element and has no line break: it is text
    // then.
    bool dropLayout(bool elementFollows) {
        if (open_.empty()) return true;
        Open& parent = open_.back();
        parent.hasElements = parent.hasElements || elementFollows;
        if (!texts_.isOpen()) return true;
        const bool isText = !parent.hasElements && texts_.open().find('\n') == std::string_view::npos;
        texts_.drop();
        return !isText;
    }

    const char* takeValue() {
        if (!texts_.isOpen()) return "";
        if (isLayout(texts_.open()) && texts_.open().find('\n') != std::string_view::npos) {
            texts_.drop();
            return "";
        }
        return texts_.finish();
    }

    HWTables& tables_;
    tessa::TextStore& texts_;
    std::vector<Open> open_;
    const tessa::TextStore::Name* groupName_ = nullptr;
    int group_ = 0;
    HWInstance instance_;
    int instances_ = 0;
};

}  // namespace

int HW_readPlainOutput(ZAVHwCtx* context, const std::wstring& path) {
    HWTables& tables = context->tables;
    tables.clear();
    try {
        tessa::DocumentFile file(kest::narrow(path).c_str());
        TableFiller filler(tables);
        if (tessa::readPlainDocument(file, 0, filler)) return filler.instances();
    } catch (const tessa::DocumentTooLarge&) {
        // Told when the file is read as a tree.
    }
    tables.clear();
    return -1;
}

}  // namespace zav
