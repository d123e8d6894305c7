#include "cli/capture/RecordedFiles.h"

#include <sys/stat.h>

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "cli/system/Failure.h"

namespace zavcli {

namespace {

constexpr std::uintmax_t kMaxRecord = std::uintmax_t{4} << 30;
constexpr std::string_view kMagic = "070701";
constexpr std::string_view kLast = "TRAILER!!!";

[[noreturn]] void refuse(const char* reason) {
    throw Failure(kExitFailed, std::string("the record of the scanner cannot be used: ") + reason);
}

class Reader {
  public:
    explicit Reader(std::string_view record) : rest_(record) {}

    std::string_view take(std::size_t size) {
        if (size > rest_.size()) refuse("it is cut off");
        const std::string_view piece = rest_.substr(0, size);
        rest_.remove_prefix(size);
        taken_ += size;
        return piece;
    }
    std::uint32_t number() {
        const std::string_view digits = take(8);
        std::uint32_t value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
        if (error != std::errc() || end != digits.data() + digits.size()) refuse("a number is damaged");
        return value;
    }
    void align() { take((4 - taken_ % 4) % 4); }

  private:
    std::string_view rest_;
    std::size_t taken_ = 0;
};

// Whether the path leads only downwards.
bool isPlain(std::string_view path) {
    for (std::string_view rest = path; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find('/'));
        if (name.empty() || name == "." || name == "..") return false;
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    }
    return !path.empty() && !path.ends_with('/') && path.find('\0') == std::string_view::npos;
}

RecordedFile::Kind kindOf(std::uint32_t mode) {
    if (S_ISREG(mode)) return RecordedFile::Kind::File;
    if (S_ISDIR(mode)) return RecordedFile::Kind::Directory;
    if (S_ISLNK(mode)) return RecordedFile::Kind::Link;
    refuse("it contains a device");
}

void merge(RecordedFiles& files, std::string path, RecordedFile file) {
    const auto [place, added] = files.try_emplace(std::move(path), file);
    if (added) return;
    RecordedFile& known = place->second;
    const bool denied = file.content.size() == known.content.size() && file.permissions == 0;
    if (file.kind == known.kind && (denied || file.content.size() > known.content.size()))
        known = std::move(file);
}

// A link may have taken the place of a directory while the scanner was reading. Nothing can be below a link.
void dropBelowLinks(RecordedFiles& files) {
    std::erase_if(files, [&files](const auto& entry) {
        const std::string& path = entry.first;
        for (std::size_t end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
            const auto parent = files.find(path.substr(0, end));
            if (parent != files.end() && parent->second.kind != RecordedFile::Kind::Directory) return true;
        }
        return false;
    });
}

}  // namespace

RecordedFiles parseRecord(std::string_view record) {
    RecordedFiles files;
    Reader reader(record);
    for (;;) {
        if (reader.take(kMagic.size()) != kMagic) refuse("an entry is damaged");
        std::array<std::uint32_t, 13> numbers{};
        for (std::uint32_t& number : numbers) number = reader.number();
        const std::uint32_t nameSize = numbers[11];
        if (nameSize == 0) refuse("a path is damaged");
        const std::string path(reader.take(nameSize).substr(0, nameSize - 1));
        reader.align();
        const std::string content(reader.take(numbers[6]));
        reader.align();
        if (path == kLast) break;
        if (!isPlain(path)) refuse("a path is damaged");
        const std::uint32_t mode = numbers[1];
        merge(files, path, {kindOf(mode), mode & 0777U, numbers[2], numbers[3], numbers[5], content});
    }
    dropBelowLinks(files);
    return files;
}

RecordedFiles readRecord(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        throw Failure(kExitFailed, "the scanner has recorded nothing; 'zav capture' needs the bundled one");
    if (size > kMaxRecord) refuse("it is too large");
    std::string record(size, '\0');
    std::ifstream file(path, std::ios::binary);
    if (!file.read(record.data(), static_cast<std::streamsize>(record.size()))) refuse("it cannot be read");
    return parseRecord(record);
}

}  // namespace zavcli
