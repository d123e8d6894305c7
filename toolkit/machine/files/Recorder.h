#pragma once

#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "kest/Descriptor.h"

namespace toolkit {

// Writes down what a scan reads: the content of files, the names in directories, and links, so that a scan of the unpacked
// record finds what this one found. The record is a cpio archive of the kind that the kernel unpacks ("newc"). Several
// processes may append to it. A path can then occur several times, and the largest content counts. A file that may not be
// read has mode 0 and no content. Only the names of devices, sockets and pipes are written down, as empty files.
class Recorder {
  public:
    // Changes a content before it is written, such as to remove passwords.
    using Filter = std::function<std::string(std::string_view path, std::string content)>;

    // Creates the file, with mode 0600. `top` is the directory whose files are read. Throws std::system_error.
    Recorder(const std::string& file, std::string top, Filter filter);

    using Clock = std::chrono::steady_clock;

    // Notes that a path was opened with these flags of open(), or that this failed with an error. After the deadline nothing
    // more is read: the path is written down without its content.
    void noteOpened(std::string_view path, int flags, const kest::Descriptor& opened, int error,
                    std::optional<Clock::time_point> deadline = std::nullopt);

    // Ends the archive. Returns why the record is incomplete; empty if it is complete. REQUIRES: no other process appends.
    std::string finish();

  private:
    // What has been written of a path, from least to most.
    enum class Known : std::uint8_t { Nothing, Name, Content };
    enum class Last : std::uint8_t { Follow, Keep };
    // Shared by all processes.
    struct Shared {
        std::atomic<bool> failed = false;
        std::atomic<bool> tooLarge = false;
        std::atomic<int> writing = 0;
    };

    std::string resolve(std::string_view path, Last last);
    void addName(const std::string& path);
    void addLink(const std::string& path, const struct stat& status);
    void addDenied(const std::string& path, bool directory);
    void addFile(const std::string& path, const kest::Descriptor& file, const struct stat& status);
    void addDirectory(const std::string& path, const kest::Descriptor& directory);
    void append(std::string_view path, const struct stat& status, std::uint32_t mode,
                std::string_view content);
    bool learn(const std::string& path, Known known);
    bool outOfTime() const { return deadline_ && Clock::now() >= *deadline_; }

    std::string top_;
    Filter filter_;
    kest::Descriptor file_;
    std::unique_ptr<Shared, void (*)(Shared*)> shared_;
    std::unordered_map<std::string, Known> known_;
    std::unordered_map<std::string, std::string> links_;
    std::uint64_t written_ = 0;
    std::optional<Clock::time_point> deadline_;
};

}  // namespace toolkit
