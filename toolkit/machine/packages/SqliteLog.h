#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace toolkit {

// A file that is read in pieces.
struct SqliteInput {
    // Fills `bytes` from this offset. False when the file ends before, or may not be read.
    std::function<bool(std::uint64_t offset, std::span<char> bytes)> read;
    std::uint64_t size = 0;
};

// The write-ahead log that lies beside an SQLite 3 database file: pages of committed transactions that take the place of
// the pages in the file. A transaction that was not committed, or whose checksums are wrong, is ignored, and so is
// everything after it.
class SqliteLog {
  public:
    // Reads the whole log once. REQUIRES: `log` outlives this object.
    explicit SqliteLog(const SqliteInput& log);

    // False when the log has content that is no log of a known version, or could not be read. It is empty then.
    bool isReadable() const { return readable_; }
    // Whether it holds no committed transaction.
    bool isEmpty() const { return frames_.empty(); }
    std::size_t pageSize() const { return pageSize_; }
    // The number of pages of the database after the last committed transaction.
    std::uint32_t databasePages() const { return databasePages_; }

    // The offset of the latest content of a page; nothing when the log does not have that page.
    std::optional<std::uint64_t> find(std::uint64_t page) const;

    bool read(std::uint64_t offset, std::span<char> bytes) const { return log_.read(offset, bytes); }

    // Whether a writer restarted the log since this object was made, so that offsets are no longer valid.
    bool wasRestarted() const;

  private:
    struct Frame {
        std::uint32_t page;
        std::uint32_t index;
    };
    class Checksum;

    bool readFrames(Checksum sum);
    void keepLatestFrames();

    const SqliteInput& log_;
    bool readable_ = true;
    std::size_t pageSize_ = 0;
    std::uint32_t databasePages_ = 0;
    std::uint64_t salt_ = 0;
    std::vector<Frame> frames_;  // one for each page, in the order of their numbers
};

}  // namespace toolkit
