#include "toolkit/quorvis/files/HashCache.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include "kest/Malloced.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kName = "quorvis-hashes ";
constexpr std::string_view kHeader = "quorvis-hashes 1\n";
constexpr std::uint64_t kMaxSize = std::uint64_t{64} << 20;
constexpr std::size_t kMaxUnusedEntries = 100'000;  // a larger cache drops the entries that were not used
constexpr std::int64_t kSecond = 1'000'000'000;

// Reads an open file line by line. The lines include their line feed.
class LineReader {
  public:
    explicit LineReader(const kest::Descriptor& file)
        : stream_(::fdopen(::fcntl(file.number(), F_DUPFD_CLOEXEC, 0), "r")) {}

    bool next(std::string_view& line) {
        line = {};
        if (stream_ == nullptr) return false;
        char* block = line_.release();  // getline() may move it
        const ssize_t length = ::getline(&block, &room_, stream_.get());
        line_.reset(block);
        if (length >= 0) line = {block, static_cast<std::size_t>(length)};
        return length >= 0;
    }
    // Whether next() failed at the end of the file, and not because of an error.
    bool atEnd() const { return stream_ != nullptr && std::feof(stream_.get()) != 0; }

  private:
    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };

    std::unique_ptr<std::FILE, Close> stream_;
    kest::Malloced<char> line_;
    std::size_t room_ = 0;
};

// Takes a number and the blank behind it from the front.
template <class Number>
bool takeNumber(std::string_view& line, Number& number) {
    const char* const last = line.data() + line.size();
    const auto [end, error] = std::from_chars(line.data(), last, number);
    if (error != std::errc() || end == last || *end != ' ') return false;
    line.remove_prefix(static_cast<std::size_t>(end - line.data()) + 1);
    return true;
}

bool isHash(std::string_view text) {
    const auto isDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); };
    return !text.empty() && std::ranges::all_of(text, isDigit);
}

template <class... Fields>
void appendFields(std::string& text, Fields... fields) {
    ((text += std::to_string(fields), text += ' '), ...);
}

// Why a file is not trusted; empty when it is.
std::string reasonForDistrust(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) return "it is not a regular file";
    if (status.st_uid != ::geteuid()) return "it belongs to another user";
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) return "other users may write to it";
    return {};
}

constexpr std::uint32_t kXfs = 0x58465342;
constexpr std::uint32_t kZfs = 0x2FC12FC1;
constexpr std::array<std::uint32_t, 7> kWritableFileSystems = {
    EXT4_SUPER_MAGIC, kXfs, BTRFS_SUPER_MAGIC, kZfs, F2FS_SUPER_MAGIC, TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC,
};

}  // namespace

std::int64_t currentTime() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

HashCache::HashCache(std::string path, std::int64_t now) : path_(std::move(path)), now_(now) {
    if (!path_.empty()) open();
}

void HashCache::giveUp(EventCode code, const std::string& reason) {
    events_.push_back({code, path_, "The hash cache is not used: " + reason, {}, {}});
    path_.clear();
    entries_.clear();
}

void HashCache::open() {
    file_ =
        kest::Descriptor(::open(path_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file_.isOpen()) {
        if (errno == ENOENT) return;
        if (errno == ELOOP) return giveUp(EventCode::Denied, "it is a link");
        return giveUp(errno == EACCES ? EventCode::Permission : EventCode::Io,
                      std::generic_category().message(errno));
    }
    struct stat status {};
    if (::fstat(file_.number(), &status) != 0)
        return giveUp(EventCode::Io, std::generic_category().message(errno));
    if (const std::string reason = reasonForDistrust(status); !reason.empty())
        return giveUp(EventCode::Denied, reason);
    size_ = static_cast<std::uint64_t>(status.st_size);
}

void HashCache::load() {
    if (path_.empty() || !file_.isOpen()) return;
    Reading reading = Reading::Damaged;
    try {
        reading = readFile();
    } catch (const std::bad_alloc&) {
        return giveUp(EventCode::Io, "it exceeds the memory limit");
    }
    if (reading == Reading::Done) return;
    if (reading == Reading::NoCache) return giveUp(EventCode::Denied, "it is another kind of file");
    entries_.clear();
    changed_ = true;
    const char* const reason = reading == Reading::OtherVersion ? "it is of another version"
                               : reading == Reading::TooLarge   ? "it is larger than 64 MiB"
                                                                : "it is damaged";
    events_.push_back(
        {EventCode::Parse, path_, std::string("The hash cache is replaced: ") + reason, {}, {}});
}

HashCache::Reading HashCache::readFile() {
    const kest::Descriptor file = std::exchange(file_, {});
    LineReader lines(file);
    std::string_view line;
    if (!lines.next(line)) return lines.atEnd() ? Reading::Done : Reading::Damaged;
    if (!line.starts_with(kName)) return Reading::NoCache;
    if (size_ > kMaxSize) return Reading::TooLarge;
    if (line != kHeader) return Reading::OtherVersion;
    while (lines.next(line)) {
        if (!readEntry(line)) return Reading::Damaged;
    }
    return lines.atEnd() ? Reading::Done : Reading::Damaged;
}

bool HashCache::readEntry(std::string_view line) {
    if (!line.ends_with('\n')) return false;
    line.remove_suffix(1);
    Key key;
    Entry entry;
    FileState& state = entry.state;
    if (!takeNumber(line, state.device) || !takeNumber(line, state.inode) || !takeNumber(line, state.size) ||
        !takeNumber(line, state.changed) || !takeNumber(line, state.modified))
        return false;
    key = {state.device, state.inode, std::string(takeField(line, ' '))};
    if (key.algorithm.empty() || !isHash(line)) return false;
    entry.hash = line;
    entries_.insert_or_assign(entries_.end(), std::move(key), std::move(entry));  // in order, as written
    return true;
}

const std::string* HashCache::find(const FileState& state, std::string_view algorithm) {
    load();
    const auto found = entries_.find({state.device, state.inode, std::string(algorithm)});
    if (found == entries_.end() || found->second.state != state) return nullptr;
    found->second.used = true;
    return &found->second.hash;
}

void HashCache::remember(const FileState& state, std::string_view algorithm, std::string hash) {
    load();
    if (path_.empty() || state.changed > now_ - 2 * kSecond) return;
    entries_.insert_or_assign({state.device, state.inode, std::string(algorithm)},
                              Entry{state, std::move(hash), true});
    changed_ = true;
}

void HashCache::write(const TextSink& sink) const {
    const bool all = entries_.size() <= kMaxUnusedEntries;
    std::uint64_t written = kHeader.size();
    std::string text(kHeader);
    for (const auto& [key, entry] : entries_) {
        if (!all && !entry.used) continue;
        const FileState& state = entry.state;
        const std::size_t before = text.size();
        appendFields(text, state.device, state.inode, state.size, state.changed, state.modified);
        text.append(key.algorithm).append(1, ' ').append(entry.hash).append(1, '\n');
        written += text.size() - before;
        if (written > kMaxSize) {
            text.resize(before);
            break;
        }
        if (text.size() < std::size_t{64} << 10) continue;
        sink(text);
        text.clear();
    }
    sink(text);
}

std::vector<Event> HashCache::save() {
    if (changed_ && !path_.empty()) {
        try {
            writeOutputFile(path_, [this](const TextSink& sink) { write(sink); });
            changed_ = false;
        } catch (const std::exception& failure) {
            events_.push_back({EventCode::Io,
                               path_,
                               std::string("The hash cache cannot be written: ") + failure.what(),
                               {},
                               {}});
        }
    }
    return std::exchange(events_, {});
}

bool keepsStates(const kest::Descriptor& file) {
    struct statfs status {};
    return ::fstatfs(file.number(), &status) == 0 &&
           std::ranges::find(kWritableFileSystems, static_cast<std::uint32_t>(status.f_type)) !=
               kWritableFileSystems.end();
}

}  // namespace toolkit::quorvis
