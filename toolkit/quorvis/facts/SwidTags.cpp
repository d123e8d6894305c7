#include "toolkit/quorvis/facts/SwidTags.h"

#include <algorithm>
#include <new>
#include <utility>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/XmlReader.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kDefaultDirectories[] = {"/usr/lib/swidtag", "/usr/share/swidtag",
                                                    "/var/lib/swidtag", "/etc/swid/swidtags.d"};
constexpr std::uint64_t kMaxTagSize = std::uint64_t{1} << 20;
constexpr std::size_t kMaxTags = 20'000;
constexpr std::size_t kMaxBytes = std::size_t{32} << 20;  // of all tags

std::size_t sizeOf(const SwidTag& tag) {
    std::size_t size = sizeof tag + tag.path.size() + tag.tagId.size() + tag.name.size() +
                       tag.version.size() + tag.tagVersion.size();
    for (const SwidEntity& entity : tag.entities)
        size += sizeof entity + entity.regid.size() + entity.role.size();
    return size;
}

bool isTrue(std::string_view value) {
    return value == "true" || value == "1";
}

class TagReader : public XmlEvents {
  public:
    explicit TagReader(SwidTag& tag) : tag_(tag) {}

    bool isTag() const { return isTag_; }

    void start(std::string_view name, const XmlAttributes& attributes) override {
        ++depth_;
        if (depth_ == 1) {
            isTag_ = name == "SoftwareIdentity";
            const auto get = [&](std::string_view attribute) {
                return attributes.get(attribute).substr(0, kMaxValueSize);
            };
            tag_.tagId = get("tagId");
            tag_.name = get("name");
            tag_.version = get("version");
            tag_.tagVersion = get("tagVersion");
            tag_.patch = isTrue(attributes.get("patch"));
            tag_.corpus = isTrue(attributes.get("corpus"));
        } else if (depth_ == 2 && name == "Entity") {
            tag_.entities.push_back(
                {std::string(attributes.get("regid")), std::string(attributes.get("role"))});
        }
    }
    void end() override { --depth_; }
    void text(std::string_view /*text*/) override {}

  private:
    SwidTag& tag_;
    int depth_ = 0;
    bool isTag_ = false;
};

}  // namespace

bool SwidEntity::hasRole(std::string_view wanted) const {
    std::string_view rest = role;
    for (std::string_view word = nextWord(rest); !word.empty(); word = nextWord(rest)) {
        if (word == wanted) return true;
    }
    return false;
}

std::optional<SwidTag> parseSwidTag(std::string_view text, std::string& problem,
                                    const ProgressCheck& checkProgress) {
    SwidTag tag;
    TagReader reader(tag);
    if (std::optional<std::string> damage = readXml(text, reader, checkProgress)) {
        problem = "damaged XML, " + *damage;
    } else if (!reader.isTag()) {
        problem = "no SoftwareIdentity element";
    } else if (tag.tagId.empty() || tag.name.empty()) {
        problem = "no name or tagId";
    } else {
        return tag;
    }
    return std::nullopt;
}

const std::vector<SwidTag>& SwidTags::tags() {
    if (!std::exchange(isRead_, true)) readWithinLimits();
    return tags_;
}

void SwidTags::readWithinLimits() {
    try {
        read();
    } catch (const BudgetExceeded& over) {
        note(over.code, {}, "not all SWID tags were read: " + over.text);
    } catch (const std::bad_alloc&) {
        tags_ = {};
        note(EventCode::LimitMemory, {}, "the SWID tags take more memory than is allowed");
    }
    // A tag that several paths lead to counts once.
    std::ranges::sort(tags_, {}, &SwidTag::path);
    const auto samePath = [](const SwidTag& one, const SwidTag& other) { return one.path == other.path; };
    tags_.erase(std::unique(tags_.begin(), tags_.end(), samePath), tags_.end());
}

void SwidTags::read() {
    if (!settings_.swid.enabled) {
        note(EventCode::Config, {}, "SWID tags are not looked at: the configuration forbids it");
        return;
    }
    for (const std::string_view directory : kDefaultDirectories) readDirectory(std::string(directory), true);
    for (const std::string& name : namesIn("/opt")) readDirectory("/opt/" + name + "/swidtag", true);
    for (const std::string& directory : settings_.swid.directories) readDirectory(directory, true);
}

// Empty when the directory does not exist or cannot be listed, which becomes an event.
std::vector<std::string> SwidTags::namesIn(const std::string& directory) {
    Files::Names listed = files_.list(directory);
    if (listed.event) events_.push_back(std::move(*listed.event));
    if (listed.access == Access::Failed) incomplete_ = true;
    return std::move(listed.names);
}

void SwidTags::readDirectory(const std::string& directory, bool recursive) {
    const std::vector<std::string> names = namesIn(directory);
    if (names.size() > settings_.fileSystem.maxEntriesPerDirectory) {
        note(EventCode::LimitEntries, directory, "too many entries");
        return;
    }
    for (const std::string& name : names) {
        budget_.checkTimeOccasionally();
        std::string path = directory;
        path.append("/").append(name);
        if (name.ends_with(".swidtag")) {
            readTag(path);
        } else if (recursive && files_.look(path).facts.kind == FileFacts::Kind::Directory) {
            readDirectory(path, false);
        }
    }
}

void SwidTags::readTag(const std::string& path) {
    Files::Content content = files_.read(path, kMaxTagSize);
    if (content.event) events_.push_back(std::move(*content.event));
    if (content.access == Access::Failed) incomplete_ = true;
    if (content.access != Access::Ok) return;
    std::string problem;
    std::optional<SwidTag> tag =
        parseSwidTag(*content.bytes, problem, [this] { budget_.checkTimeOccasionally(); });
    if (!tag) {
        note(EventCode::Parse, path, "no usable SWID tag: " + problem);
        return;
    }
    tag->path = files_.withoutLinks(path);
    held_ += sizeOf(*tag);
    if (held_ > kMaxBytes || tags_.size() == kMaxTags)
        throw BudgetExceeded(EventCode::LimitBytes, "there are too many or too large ones");
    tags_.push_back(std::move(*tag));
}

void SwidTags::note(EventCode code, const std::string& path, std::string text) {
    incomplete_ = true;
    events_.push_back({code, path, std::move(text), {}, {}});
}

}  // namespace toolkit::quorvis
