#include "toolkit/quorvis/Files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "toolkit/quorvis/FileBytes.h"
#include "toolkit/quorvis/SecretFiles.h"

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kHeldAtMost = std::uint64_t{64} << 20;
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

Event eventOf(int error, const std::string& path) {
    if (error == EACCES || error == EPERM)
        return makeEvent(EventCode::Permission, path, "No permission to open this");
    if (error == ELOOP)
        return makeEvent(EventCode::Loop, path, "A link that goes round in circles or is no true link");
    return makeEvent(EventCode::Io, path, "Cannot be opened: " + std::generic_category().message(error));
}

// Why no such path can be looked up; empty for a proper one.
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

FileFacts factsOf(const struct stat& status) {
    FileFacts facts;
    facts.kind = kindOf(status.st_mode);
    facts.size = static_cast<std::uint64_t>(status.st_size);
    facts.mode = status.st_mode & 07777U;
    facts.owner = status.st_uid;
    facts.modified = status.st_mtim.tv_sec;
    facts.device = status.st_dev;
    facts.inode = status.st_ino;
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

// A descriptor for reading of the very file that `handle` stands for, whatever has taken its path meanwhile.
kest::Descriptor reopened(const kest::Descriptor& handle) {
    const std::string link = "/proc/self/fd/" + std::to_string(handle.number());
    const int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const int quietly = ::open(link.c_str(), flags | O_NOATIME);  // for owners and root only
    if (quietly >= 0 || errno != EPERM) return kest::Descriptor(quietly);
    return kest::Descriptor(::open(link.c_str(), flags));
}

}  // namespace

Files::Facts Files::lookWith(const std::string& path, int flags) {
    if (std::string problem = problemOf(path); !problem.empty())
        return {Access::Failed, {}, makeEvent(EventCode::Unsupported, path, std::move(problem))};
    const kest::Descriptor handle = root_.openStrictly(path, O_PATH | flags);
    struct stat status {};
    if (handle.isOpen() && ::fstat(handle.number(), &status) == 0)
        return {Access::Ok, factsOf(status), std::nullopt};
    if (meansMissing(errno)) return {};
    return {Access::Failed, {}, eventOf(errno, path)};
}

Files::Facts Files::look(const std::string& path) {
    return lookWith(path, 0);
}

Files::Facts Files::lookAtLink(const std::string& path) {
    return lookWith(path, O_NOFOLLOW);
}

std::string Files::withoutLinks(const std::string& path) {
    const kest::Descriptor handle =
        problemOf(path).empty() ? root_.openStrictly(path, O_PATH) : kest::Descriptor();
    if (!handle.isOpen()) return path;
    std::string plain = root_.pathOf(handle);
    return plain.empty() ? path : plain;
}

std::string Files::linkText(const std::string& path) {
    return root_.readLink(path);
}

Files::Opened Files::openToRead(const std::string& path) {
    if (std::string problem = problemOf(path); !problem.empty())
        return {failure(EventCode::Unsupported, path, std::move(problem)), {}, {}};
    // A handle first: merely opening some devices for reading has effects.
    const kest::Descriptor handle = root_.openStrictly(path, O_PATH);
    struct stat status {};
    if (!handle.isOpen() || ::fstat(handle.number(), &status) != 0) {
        if (meansMissing(errno)) return {};
        return {{Access::Failed, nullptr, eventOf(errno, path)}, {}, {}};
    }
    if (S_ISDIR(status.st_mode)) return {};
    if (!S_ISREG(status.st_mode)) {
        Event event =
            makeEvent(EventCode::SpecialFile, path, "Neither a file nor a directory, so it is not read");
        return {{Access::Missing, nullptr, std::move(event)}, {}, {}};
    }
    const std::string plain = root_.pathOf(handle);
    if (holdsSecrets(path) || holdsSecrets(plain))
        return {failure(EventCode::Denied, path, "The content of this file is never read"), {}, {}};
    if (plain.empty()) return {failure(EventCode::Io, path, "Cannot be told where this lies"), {}, {}};
    Opened opened{{}, reopened(handle), {}};
    if (!opened.file.isOpen()) return {{Access::Failed, nullptr, eventOf(errno, path)}, {}, {}};
    opened.state = {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
                    nanoseconds(status.st_ctim), nanoseconds(status.st_mtim)};
    return opened;
}

Content Files::readOpened(const std::string& path, const Opened& opened, std::uint64_t limit, bool whole) {
    auto bytes = std::make_shared<std::string>();
    const BytesRead result = readBytes(opened.file, limit, whole, *bytes);
    return contentOf(result, std::move(bytes), path, limit);
}

void Files::keep(const FileState& state, Cached cached) {
    const std::uint64_t size = cached.bytes->size();
    if (size > kHeldAtMost / 4) return;
    const auto [place, added] = contents_.try_emplace(state);
    if (added) order_.push_back(state);
    held_ += size;
    held_ -= added ? 0 : place->second.bytes->size();
    place->second = std::move(cached);
    while (held_ > kHeldAtMost) {
        const auto oldest = contents_.find(order_.front());
        held_ -= oldest->second.bytes->size();
        contents_.erase(oldest);
        order_.pop_front();
    }
}

void Files::forget() {
    contents_.clear();
    order_.clear();
    held_ = 0;
}

Content Files::read(const std::string& path, std::uint64_t limit) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return std::move(opened.refusal);
    if (opened.state.size > limit) return failure(EventCode::LimitBytes, path, tooLarge(limit));
    const auto cached = contents_.find(opened.state);
    if (cached != contents_.end() && cached->second.whole) {
        if (cached->second.bytes->size() > limit)
            return failure(EventCode::LimitBytes, path, tooLarge(limit));
        return {Access::Ok, cached->second.bytes, std::nullopt};
    }
    Content content = readOpened(path, opened, limit, true);
    if (content.access == Access::Ok) keep(opened.state, {content.bytes, true});
    return content;
}

Content Files::readStart(const std::string& path, std::uint64_t limit) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return std::move(opened.refusal);
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
    Content content = readOpened(path, opened, limit, false);
    if (content.access == Access::Ok) keep(opened.state, {content.bytes, content.bytes->size() < limit});
    return content;
}

Files::Opening Files::open(const std::string& path) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return {opened.refusal.access, {}, std::move(opened.refusal.event)};
    return {Access::Ok, std::move(opened.file), std::nullopt};
}

Content Files::sha256(const std::string& path) {
    Opened opened = openToRead(path);
    if (!opened.file.isOpen()) return std::move(opened.refusal);
    const std::uint64_t limit = settings_.fileSystem.maxHashedSize;
    if (opened.state.size > limit) return failure(EventCode::LimitBytes, path, tooLarge(limit));
    const auto known = sums_.find(opened.state);
    if (known != sums_.end()) return {Access::Ok, known->second, std::nullopt};
    if (const std::string* const kept = cache_ == nullptr ? nullptr : cache_->find(opened.state, kSha256))
        return {Access::Ok, std::make_shared<const std::string>(*kept), std::nullopt};
    auto sum = std::make_shared<std::string>();
    const BytesRead result = sha256Of(opened.file, limit, *sum);
    Content content = contentOf(result, std::move(sum), path, limit);
    if (content.access != Access::Ok) return content;
    sums_.emplace(opened.state, content.bytes);
    if (cache_ != nullptr && keepsStates(opened.file))
        cache_->remember(opened.state, kSha256, *content.bytes);
    return content;
}

}  // namespace toolkit::quorvis
