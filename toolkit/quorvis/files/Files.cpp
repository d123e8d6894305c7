#include "toolkit/quorvis/files/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "toolkit/quorvis/files/Disclosure.h"
#include "toolkit/quorvis/files/FileBytes.h"
#include "toolkit/quorvis/files/LookupBudget.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kMaxCachedBytes = std::uint64_t{32} << 20;
constexpr std::size_t kMaxHashes = 100'000;
constexpr std::size_t kMaxExpected = 100'000;
constexpr std::string_view kSha256 = "sha256";

using Content = Files::Content;

Event makeEvent(EventCode code, const std::string& path, std::string text) {
    return {code, path, std::move(text), {}, {}};
}

Content failure(EventCode code, const std::string& path, std::string text) {
    return {Access::Failed, nullptr, makeEvent(code, path, std::move(text))};
}

bool meansMissing(int error) {
    return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

// The directory on the way to the path that may not be searched; empty when there is none.
std::string closedDirectory(const FileFinder& finder, const std::string& path) {
    std::size_t end = 0;
    while (end != path.size()) {
        const std::size_t begin = end;
        end = std::min(path.find('/', begin + 1), path.size());
        const FoundFile found = finder.find(path.substr(0, end), true);
        if (found.problem == FoundFile::Problem::None) continue;
        return found.error == EACCES ? path.substr(0, begin) : std::string();
    }
    return {};
}

Event eventOf(int error, const std::string& path) {
    if (error == EACCES || error == EPERM)
        return makeEvent(EventCode::Permission, path, "No permission to open this");
    if (error == ELOOP)
        return makeEvent(EventCode::Loop, path, "A link that goes round in circles or is no true link");
    return makeEvent(EventCode::Io, path, "Cannot be opened: " + std::generic_category().message(error));
}

// Reports the directory that may not be searched, so that all paths below it cause the same event.
Event notFound(const FileFinder& finder, int error, const std::string& path) {
    const std::string closed = error == EACCES ? closedDirectory(finder, path) : std::string();
    if (closed.empty()) return eventOf(error, path);
    return makeEvent(EventCode::Permission, closed, "No permission to search this directory");
}

// Why the path is invalid; empty when it is valid.
std::string problemOf(const std::string& path) {
    if (path.empty() || path.front() != '/') return "The path is not absolute";
    if (path.find('\0') != std::string::npos) return "The path holds a NUL character";
    return {};
}

FileFacts::Kind kindOf(mode_t mode) {
    if (S_ISREG(mode)) return FileFacts::Kind::File;
    if (S_ISDIR(mode)) return FileFacts::Kind::Directory;
    if (S_ISLNK(mode)) return FileFacts::Kind::Link;
    return FileFacts::Kind::Other;
}

FileFacts factsOf(const FoundFile& found) {
    const struct stat& status = found.status;
    FileFacts facts;
    facts.kind = kindOf(status.st_mode);
    facts.size = static_cast<std::uint64_t>(status.st_size);
    facts.mode = status.st_mode & 07777U;
    facts.owner = status.st_uid;
    facts.modified = status.st_mtim.tv_sec;
    facts.device = status.st_dev;
    facts.inode = status.st_ino;
    facts.atLink = found.isLink;
    return facts;
}

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::string tooLarge(std::uint64_t limit) {
    return "Larger than the " + std::to_string(limit) + " bytes that are read at most";
}

Content contentOf(BytesRead result, std::shared_ptr<const std::string> bytes, const std::string& path,
                  std::uint64_t limit) {
    switch (result) {
        case BytesRead::All:
        case BytesRead::Start:
            return {Access::Ok, std::move(bytes), std::nullopt};
        case BytesRead::TooMany:
            return failure(EventCode::LimitBytes, path, tooLarge(limit));
        case BytesRead::Changed:
            return failure(EventCode::Io, path, "Changes its size again and again");
        case BytesRead::Failed:
            break;
    }
    return failure(EventCode::Io, path, "Cannot be read: " + std::generic_category().message(errno));
}

constexpr const char* kHidden = "Other users may not look there";
constexpr const char* kOfKernel = "The kernel makes this up, so it is not for signatures";
constexpr const char* kUnreadable = "Other users may not read this";
constexpr const char* kSecret = "The content of this file is never read";
constexpr const char* kHoldsKey = "This holds a key or the hash of a password, so it is not read";

// The number of bytes that are searched for a key before parts of a file are read.
constexpr std::size_t kSearchedForKeys = 4096;
// The number of bytes at the start of a file that tell its format, and where its parts are.
constexpr std::size_t kUsualHeaderSize = 1024;

std::string startOf(const kest::Descriptor& file, std::size_t size = kSearchedForKeys) {
    std::array<char, kSearchedForKeys> buffer;
    const ssize_t count = ::pread(file.number(), buffer.data(), std::min(size, buffer.size()), 0);
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

bool isKey(std::string_view start, std::uint64_t size) {
    return beginsAsKey(start, size) || holdsKey(start);
}

bool startsWithKey(const kest::Descriptor& file, std::uint64_t size) {
    return isKey(startOf(file), size);
}

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

}  // namespace

// Calls `finding`. Sets `event` when there is a problem other than a missing file.
FoundFile Files::checked(const std::string& path, std::optional<Event>& event,
                         const std::function<FoundFile()>& finding) const {
    FoundFile found;
    if (std::string problem = problemOf(path); !problem.empty()) {
        found.problem = FoundFile::Problem::NotOpened;
        event = makeEvent(EventCode::Unsupported, path, std::move(problem));
        return found;
    }
    found = finding();
    if (found.problem == FoundFile::Problem::HiddenDirectory)
        event = makeEvent(EventCode::Denied, path, kHidden);
    if (found.problem == FoundFile::Problem::PseudoFile)
        event = makeEvent(EventCode::Denied, path, kOfKernel);
    if (found.problem == FoundFile::Problem::NotOpened && !meansMissing(found.error))
        event = notFound(finder_, found.error, path);
    return found;
}

Files::Facts Files::lookWith(const std::string& path, bool follow) const {
    std::optional<Event> event;
    const FoundFile found = findStatus(path, follow, event);
    if (found.problem == FoundFile::Problem::None) return {Access::Ok, factsOf(found), std::nullopt};
    if (!event) return {};
    return {Access::Failed, {}, std::move(event)};
}

Files::Facts Files::look(const std::string& path) {
    return lookWith(path, true);
}

Files::Facts Files::lookAtLink(const std::string& path) {
    return lookWith(path, false);
}

Files::Names Files::list(const std::string& path) {
    std::optional<Event> event;
    const FoundFile found = find(path, true, event);
    if (found.problem != FoundFile::Problem::None)
        return {event ? Access::Failed : Access::Missing, {}, std::move(event)};
    if (!S_ISDIR(found.status.st_mode)) return {};
    if (!disclosure_.ofNames(found.status, found.place))
        return {Access::Failed,
                {},
                makeEvent(EventCode::Denied, path, "Other users may not list this directory")};
    const int opened = ::openat(found.handle.number(), ".", O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
    const std::unique_ptr<DIR, CloseDirectory> directory(opened < 0 ? nullptr : ::fdopendir(opened));
    if (!directory) return {Access::Failed, {}, eventOf(errno, path)};
    Names names{Access::Ok, {}, std::nullopt};
    while (const dirent* const entry = ::readdir(directory.get())) {
        const std::string_view name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != "..") names.names.emplace_back(name);
    }
    std::ranges::sort(names.names);
    return names;
}

std::string Files::withoutLinks(const std::string& path) {
    std::optional<Event> event;
    const FoundFile found = findStatus(path, true, event);
    if (found.problem != FoundFile::Problem::None) return path;
    return found.place.empty() ? "/" : found.place;
}

std::string Files::linkText(const std::string& path) {
    std::optional<Event> event;
    const FoundFile found = find(path, false, event);
    std::array<char, 4096> text;
    if (found.problem != FoundFile::Problem::None || !S_ISLNK(found.status.st_mode)) return {};
    const ssize_t length = ::readlinkat(found.handle.number(), "", text.data(), text.size());
    return length < 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(length));
}

// Why the opened file must not be read. The status is that of the opened file itself, whatever its path leads to now.
std::optional<Event> Files::refusalOf(const std::string& path, const FoundFile& found,
                                      const Opened& opened) const {
    if (isSecretByName(path) || (found.place != path && isSecretByName(found.place)))
        return makeEvent(EventCode::Denied, path, kSecret);
    // The finder has looked at every other file system on the way.
    if (finder_.topIsPseudo() && isOnPseudoFileSystem(opened.file.number()))
        return makeEvent(EventCode::Denied, path, kOfKernel);
    if (!disclosure_.ofContent(found.status, found.place))
        return makeEvent(EventCode::Denied, path, kUnreadable);
    return std::nullopt;
}

Files::Opened Files::openToRead(const std::string& path) {
    std::optional<Event> event;
    const bool expected = regular_.contains(std::hash<std::string>()(path));
    FoundFile found = checked(path, event, [&] { return finder_.open(path, expected, &trail_); });
    const struct stat& status = found.status;
    if (found.problem != FoundFile::Problem::None && !event) return {};
    if (event) return {{Access::Failed, nullptr, std::move(event)}, {}, {}};
    if (S_ISDIR(status.st_mode)) return {};
    if (!S_ISREG(status.st_mode)) {
        event = makeEvent(EventCode::SpecialFile, path, "Neither a file nor a directory, so it is not read");
        return {{Access::Missing, nullptr, std::move(event)}, {}, {}};
    }
    if (!found.handle.isOpen()) return {{Access::Failed, nullptr, eventOf(found.error, path)}, {}, {}};
    Opened opened{{}, std::move(found.handle), {}};
    opened.state = {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
                    nanoseconds(status.st_ctim), nanoseconds(status.st_mtim)};
    event = refusalOf(path, found, opened);
    if (event) return {{Access::Failed, nullptr, std::move(event)}, {}, {}};
    return opened;
}

void Files::count(std::uint64_t bytes) const {
    if (budget_ != nullptr) budget_->chargeRead(bytes);
}

Content Files::readOpened(const std::string& path, const Opened& opened, std::uint64_t limit, bool whole,
                          KeySearch search) {
    auto bytes = std::make_shared<std::string>();
    const BytesRead result = readBytes(opened.file, opened.state.size, limit, whole, *bytes,
                                       [this](std::uint64_t size) { count(size); });
    if (search == KeySearch::Whole && isKey(*bytes, opened.state.size))
        return failure(EventCode::Denied, path, kHoldsKey);
    return contentOf(result, std::move(bytes), path, limit);
}

std::uint64_t Files::heldBy(const Cached& cached) {
    constexpr std::uint64_t kOverhead = 256;
    return cached.bytes->size() + kOverhead;
}

void Files::keep(const FileState& state, Cached cached) {
    const std::uint64_t size = heldBy(cached);
    if (size > kMaxCachedBytes / 2) return;
    const auto [place, added] = contents_.try_emplace(state);
    if (added) order_.push_back(state);
    held_ += size;
    held_ -= added ? 0 : heldBy(place->second);
    place->second = std::move(cached);
    while (held_ > kMaxCachedBytes) {
        const auto oldest = contents_.find(order_.front());
        held_ -= heldBy(oldest->second);
        contents_.erase(oldest);
        order_.pop_front();
    }
}

void Files::expectRegular(const std::string& path) {
    if (regular_.size() == kMaxExpected) regular_.clear();
    regular_.insert(std::hash<std::string>()(path));
}

void Files::forget() {
    trail_.forget();
    regular_.clear();
    contents_.clear();
    order_.clear();
    held_ = 0;
}

Content Files::read(const std::string& path, std::uint64_t limit, KeySearch search) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return std::move(opened.refusal);
    if (opened.state.size > limit) return failure(EventCode::LimitBytes, path, tooLarge(limit));
    const auto cached = contents_.find(opened.state);
    if (cached != contents_.end() && cached->second.whole) {
        if (cached->second.bytes->size() > limit)
            return failure(EventCode::LimitBytes, path, tooLarge(limit));
        return {Access::Ok, cached->second.bytes, std::nullopt};
    }
    Content content = readOpened(path, opened, limit, true, search);
    if (content.access == Access::Ok && search == KeySearch::Whole) keep(opened.state, {content.bytes, true});
    return content;
}

Content Files::readStart(const std::string& path, std::uint64_t limit) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return std::move(opened.refusal);
    // A part may be too short to be recognised as a key.
    if (limit < kSearchedForKeys && startsWithKey(opened.file, opened.state.size))
        return failure(EventCode::Denied, path, kHoldsKey);
    const auto cached = contents_.find(opened.state);
    if (cached != contents_.end()) {
        const Cached& held = cached->second;
        if (held.bytes->size() == limit || (held.whole && held.bytes->size() < limit))
            return {Access::Ok, held.bytes, std::nullopt};
        if (held.bytes->size() > limit) {
            auto start = std::make_shared<const std::string>(*held.bytes, 0, static_cast<std::size_t>(limit));
            return {Access::Ok, std::move(start), std::nullopt};
        }
    }
    Content content = readOpened(path, opened, limit, false, KeySearch::Whole);
    if (content.access == Access::Ok) keep(opened.state, {content.bytes, content.bytes->size() < limit});
    return content;
}

Files::Opening Files::open(const std::string& path, KeySearch search) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return {opened.refusal.access, {}, {}, std::move(opened.refusal.event)};
    std::string start =
        startOf(opened.file, search == KeySearch::Whole ? kSearchedForKeys : kUsualHeaderSize);
    if (search == KeySearch::Whole && isKey(start, opened.state.size))
        return {Access::Failed, {}, {}, makeEvent(EventCode::Denied, path, kHoldsKey)};
    return {Access::Ok, std::move(opened.file), std::move(start), std::nullopt};
}

Content Files::sha256(const std::string& path) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return std::move(opened.refusal);
    if (startsWithKey(opened.file, opened.state.size)) return failure(EventCode::Denied, path, kHoldsKey);
    const std::uint64_t limit = settings_.fileSystem.maxHashedSize;
    if (opened.state.size > limit) return failure(EventCode::LimitBytes, path, tooLarge(limit));
    const auto known = sums_.find(opened.state);
    if (known != sums_.end()) return {Access::Ok, known->second, std::nullopt};
    if (const std::string* const kept = cache_ == nullptr ? nullptr : cache_->find(opened.state, kSha256))
        return {Access::Ok, std::make_shared<const std::string>(*kept), std::nullopt};
    auto sum = std::make_shared<std::string>();
    const BytesRead result = sha256Of(opened.file, limit, *sum, [this](std::uint64_t size) { count(size); });
    Content content = contentOf(result, std::move(sum), path, limit);
    if (content.access != Access::Ok) return content;
    if (sums_.size() == kMaxHashes) sums_.clear();
    sums_.emplace(opened.state, content.bytes);
    if (cache_ != nullptr && keepsStates(opened.file))
        cache_->remember(opened.state, kSha256, *content.bytes);
    return content;
}

}  // namespace toolkit::quorvis
