// The format is that of the package debug/buildinfo of Go.
#include <algorithm>
#include <optional>

#include "toolkit/machine/packages/PackageUrl.h"
#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/formats/Components.h"
#include "toolkit/quorvis/formats/ElfFile.h"
#include "toolkit/quorvis/formats/WindowsProgram.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kMark("\xff Go buildinf:", 14);
constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kAlignment = 16;  // of the header
constexpr std::uint64_t kMaxSearch = std::uint64_t{1} << 20;
constexpr std::uint64_t kMaxTextSize = std::uint64_t{1} << 20;
constexpr std::size_t kSentinelSize = 16;

constexpr unsigned kBigEndian = 1;
constexpr unsigned kInline = 2;  // the texts follow the header, since Go 1.18

// The addresses and places of a program that may contain build information.
class Image {
  public:
    // None if the file is no program, or if it is damaged; then `damaged` is set.
    static std::optional<Image> open(const RandomAccessFile& file, bool& damaged) {
        Image image;
        image.elf_ = ElfFile::open(file, damaged);
        if (image.elf_) return image;
        if (!damaged) image.windows_ = WindowsProgram::read(file, damaged);
        if (image.windows_) return image;
        return std::nullopt;
    }

    // Where the header is, or where it has to be searched for. None if this program has none, or if it is damaged.
    std::optional<ElfFile::Place> place(bool& damaged) const {
        if (elf_ && !elf_->hasSections()) return elf_->writableData();
        if (elf_) {
            ElfFile::Place place;
            const ElfFile::Section section = elf_->findSection(".go.buildinfo", place);
            damaged = section == ElfFile::Section::Damaged;
            return section == ElfFile::Section::Found ? std::optional(place) : std::nullopt;
        }
        const auto& sections = windows_->sections;
        const auto found = std::ranges::find_if(sections, &WindowsProgram::Section::writable);
        if (found == sections.end()) return std::nullopt;
        return ElfFile::Place{found->offset, found->size};
    }

    Count offsetOf(std::uint64_t address) const {
        if (elf_) return elf_->offsetOf(address);
        if (address < windows_->base) return std::nullopt;
        return windows_->offsetOf(address - windows_->base);
    }

  private:
    std::optional<ElfFile> elf_;
    std::optional<WindowsProgram> windows_;
};

// The texts of the build information.
struct BuildInfo {
    std::string goVersion;
    std::string modules;
};

std::optional<std::uint64_t> findHeader(const RandomAccessFile& file, const ElfFile::Place& place) {
    const std::string bytes = file.readUpTo(place.offset, std::min(place.size, kMaxSearch));
    for (std::size_t at = bytes.find(kMark); at != std::string::npos; at = bytes.find(kMark, at + 1)) {
        if (at % kAlignment == 0) return place.offset + at;
    }
    return std::nullopt;
}

// Takes a text behind its length, a number of 7 bits per byte.
bool takeInline(std::string_view& rest, std::string& text) {
    std::uint64_t size = 0;
    for (unsigned shift = 0; shift < 35; shift += 7) {
        if (rest.empty()) return false;
        const auto byte = static_cast<unsigned char>(rest.front());
        rest.remove_prefix(1);
        size |= std::uint64_t{byte & 0x7FU} << shift;
        if ((byte & 0x80U) != 0) continue;
        if (size > rest.size()) return false;
        text = rest.substr(0, size);
        rest.remove_prefix(size);
        return true;
    }
    return false;
}

// Reads the text that the pointer at `at` of the header leads to: it points to a pointer and a length. In a program that
// may be loaded anywhere, the pointers are 0 until it is loaded; then the text is empty.
bool readPointed(const RandomAccessFile& file, const Image& image, std::string_view header, std::size_t at,
                 std::string& text, bool mayBeUnset = false) {
    const auto width = static_cast<std::size_t>(static_cast<unsigned char>(header[14]));
    const bool big = (static_cast<unsigned char>(header[15]) & kBigEndian) != 0;
    const auto number = [big, width](std::string_view bytes, std::size_t offset) {
        return big ? bigEndian(bytes, offset, width) : littleEndian(bytes, offset, width);
    };
    text.clear();
    const std::uint64_t pointer = number(header, at);
    if (pointer == 0) return true;
    const Count place = image.offsetOf(pointer);
    // Variables without a value are only in memory.
    if (!place && mayBeUnset) return true;
    std::string pair;
    if (!place || !file.read(*place, 2 * width, pair)) return false;
    const std::uint64_t size = number(pair, width);
    const std::uint64_t start = number(pair, 0);
    if (size == 0 || start == 0) return true;
    const Count content = image.offsetOf(start);
    return content && size <= kMaxTextSize && file.read(*content, size, text);
}

bool readInfo(const RandomAccessFile& file, const Image& image, std::uint64_t at, BuildInfo& info) {
    std::string header;
    if (!file.read(at, kHeaderSize, header)) return false;
    if ((static_cast<unsigned char>(header[15]) & kInline) != 0) {
        const std::string texts = file.readUpTo(at + kHeaderSize, 2 * kMaxTextSize);
        std::string_view rest = texts;
        return takeInline(rest, info.goVersion) && takeInline(rest, info.modules);
    }
    const auto width = static_cast<std::size_t>(static_cast<unsigned char>(header[14]));
    return (width == 4 || width == 8) && readPointed(file, image, header, kAlignment, info.goVersion) &&
           readPointed(file, image, header, kAlignment + width, info.modules, true);
}

// The list of modules is between two sentinels of 16 bytes.
std::string_view withoutSentinels(std::string_view modules) {
    const bool enclosed =
        modules.size() > 2 * kSentinelSize && modules[modules.size() - kSentinelSize - 1] == '\n';
    return enclosed ? modules.substr(kSentinelSize, modules.size() - 2 * kSentinelSize) : std::string_view();
}

// "v1.2.3+incompatible" is 1.2.3; "(devel)" is not a version.
std::string plainVersion(std::string_view version) {
    if (version.starts_with('(')) return {};
    if (version.size() > 1 && version[0] == 'v' && version[1] >= '0' && version[1] <= '9')
        version.remove_prefix(1);
    return std::string(version.substr(0, version.find("+incompatible")));
}

// "go1.21.3 X:loopvar" is 1.21.3; "devel go1.22-0123abc Mon Jan 1" is 1.22-0123abc.
std::string toolchainVersion(std::string_view text) {
    if (text.starts_with("devel ")) text.remove_prefix(6);
    if (!text.starts_with("go")) return {};
    return std::string(text.substr(2, text.substr(2).find(' ')));
}

std::string moduleUrl(std::string_view path, std::string_view version) {
    const std::size_t slash = path.rfind('/');
    const std::string_view group = slash == std::string_view::npos ? "" : path.substr(0, slash);
    const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    return packageUrl("golang", group, name, version.starts_with('(') ? "" : version, {});
}

Component moduleOf(std::string_view role, std::string_view path, std::string_view version) {
    Component component;
    component.role = role;
    component.name = path;
    component.version = plainVersion(version);
    component.purl = moduleUrl(path, version);
    return component;
}

// Settings with special characters are between quotes or backquotes.
std::string unquoted(std::string_view text) {
    if (text.size() < 2 || text.front() != text.back() || (text.front() != '"' && text.front() != '`'))
        return std::string(text);
    const bool escapes = text.front() == '"';
    text = text.substr(1, text.size() - 2);
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (escapes && text[i] == '\\' && i + 1 < text.size()) ++i;
        plain += text[i];
    }
    return plain;
}

Component settingOf(std::string_view text) {
    // A quoted key may contain the separator.
    const std::size_t from = text.starts_with('"') ? text.find('"', 1) : 0;
    const std::size_t separator = text.find('=', from == std::string_view::npos ? 0 : from);
    Component setting;
    setting.role = "setting";
    setting.name = unquoted(text.substr(0, separator));
    if (separator != std::string_view::npos) setting.value = unquoted(text.substr(separator + 1));
    return setting;
}

// A replacement without a version is a directory on the machine of the build, so its version is unknown.
void replaceModule(Component& module, std::string_view path, std::string_view version) {
    const std::string role = module.role;
    module = version.empty() ? moduleOf(role, module.name, "") : moduleOf(role, path, version);
}

// Programs that were not built from modules have only the path of their main package.
void addModules(std::string_view lines, const ComponentLimits& limits, const ProgressCheck& checkProgress,
                ComponentList& list) {
    std::string_view package;
    bool hasMain = false;
    for (std::string_view line; nextLine(lines, line);) {
        if (checkProgress) checkProgress();
        const std::string_view kind = takeField(line, '\t');
        if (kind == "build") {
            if (!list.add(settingOf(line), limits.components)) return;
            continue;
        }
        const std::string_view path = takeField(line, '\t');
        const std::string_view version = takeField(line, '\t');
        if (kind == "path") package = path;
        if (kind == "=>" && !list.components.empty()) replaceModule(list.components.back(), path, version);
        if ((kind != "mod" && kind != "dep") || path.empty()) continue;
        hasMain = hasMain || kind == "mod";
        if (!list.add(moduleOf(kind == "mod" ? "main" : "dependency", path, version), limits.components))
            return;
    }
    if (!hasMain && !package.empty() && package != "command-line-arguments")
        list.add(moduleOf("main", package, ""), limits.components);
}

}  // namespace

ComponentList readGoComponents(const RandomAccessFile& file, std::string_view /*path*/,
                               const ComponentLimits& limits, const ProgressCheck& checkProgress) {
    ComponentList list;
    bool damaged = false;
    const std::optional<Image> image = Image::open(file, damaged);
    std::optional<ElfFile::Place> place;
    if (image) place = image->place(damaged);
    if (damaged) list.problem = "the headers are damaged";
    const std::optional<std::uint64_t> at = place ? findHeader(file, *place) : std::nullopt;
    if (!at) return list;
    BuildInfo info;
    if (!readInfo(file, *image, *at, info)) {
        list.problem = "the build information is damaged";
        return list;
    }
    addModules(withoutSentinels(info.modules), limits, checkProgress, list);
    Component toolchain;
    toolchain.role = "toolchain";
    toolchain.name = "stdlib";
    toolchain.version = toolchainVersion(info.goVersion);
    if (toolchain.version.empty()) return list;
    toolchain.purl = packageUrl("golang", "", "stdlib", toolchain.version, {});
    list.add(std::move(toolchain), limits.components);
    return list;
}

}  // namespace toolkit::quorvis
