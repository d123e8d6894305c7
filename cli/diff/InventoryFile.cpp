#include "cli/diff/InventoryFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "cli/diff/BadInventory.h"
#include "cli/diff/InventoryBuilder.h"
#include "cli/system/Failure.h"

namespace zavcli {

namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw Failure(kExitBadUsage, fmt::format("cannot read '{}': {}", path, reason));
}

// A descriptor that is closed unless it is standard input.
class Input {
  public:
    explicit Input(const std::string& path)
        : number_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (number_ < 0) refuse(path, systemErrorText(errno));
    }
    ~Input() {
        if (number_ != STDIN_FILENO) ::close(number_);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    int number() const { return number_; }

  private:
    int number_;
};

// The size of a pipe is not known before its end.
std::string contentOf(const std::string& path) {
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    const Input input(path);
    std::string content;
    for (;;) {
        const std::size_t size = content.size();
        content.resize(size + kPiece);
        const ssize_t count = ::read(input.number(), content.data() + size, kPiece);
        if (count < 0 && errno != EINTR) refuse(path, systemErrorText(errno));
        content.resize(size + static_cast<std::size_t>(std::max(count, ssize_t{0})));
        if (count == 0) return content;
        if (content.size() > kMaxInventorySize)
            refuse(path, fmt::format("it is larger than {} MiB", kMaxInventorySize >> 20U));
    }
}

}  // namespace

SavedInventory parseInventory(std::string_view content) {
    if (content.empty()) throw BadInventory(0, "the file is empty");
    constexpr std::string_view kMark = "\xef\xbb\xbf";
    std::string_view text = content;
    if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (text.starts_with('{')) return parseJsonInventory(content);
    // UTF-16 begins with a mark or a zero byte.
    if (text.starts_with('<') || content.starts_with("\xff\xfe") || content.starts_with("\xfe\xff") ||
        content.starts_with('\0'))
        return parseXmlInventory(content);
    throw BadInventory(1,
                       "this is neither JSON nor XML; 'zav hw --format json' and '--format xml' write these");
}

SavedInventory readSavedInventory(const std::string& path) {
    try {
        SavedInventory inventory = parseInventory(contentOf(path));
        inventory.file = path;
        return inventory;
    } catch (const BadInventory& bad) {
        const std::string place = bad.line() == 0 ? path : fmt::format("{}:{}", path, bad.line());
        throw Failure(kExitBadUsage, fmt::format("{}: {}", place, bad.what()));
    }
}

}  // namespace zavcli
