// Builders of the database files that rpm had before SQLite.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit {

// A number of `width` bytes, its lowest or its highest byte first.
inline std::string bytesOf(std::uint64_t value, int width, bool little = true) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * (little ? i : width - 1 - i)));
    return bytes;
}

// An NDB file whose blobs have the slots of these numbers (of 256 per page; the header takes 0 and 1). Without numbers, they
// have the first slots.
inline std::string ndbFile(const std::vector<std::string>& blobs, std::vector<std::size_t> slots = {},
                           std::size_t pages = 1) {
    for (std::size_t i = slots.size(); i < blobs.size(); ++i) slots.push_back(i + 2);
    std::string file =
        "RpmP" + bytesOf(0, 4) + bytesOf(7, 4) + bytesOf(pages, 4) + bytesOf(blobs.size() + 1, 4);
    file.resize(32, '\0');
    while (file.size() < pages * 4096) file += "Slot" + std::string(12, '\0');
    for (std::size_t i = 0; i < blobs.size(); ++i) {
        std::string blob =
            "BlbS" + bytesOf(i + 1, 4) + bytesOf(7, 4) + bytesOf(blobs[i].size(), 4) + blobs[i];
        blob.resize((blob.size() + 12 + 15) / 16 * 16 - 12, '\0');
        blob += bytesOf(0, 4) + bytesOf(blobs[i].size(), 4) + "BlbE";
        file.replace(16 * slots[i] + 4, 12,
                     bytesOf(i + 1, 4) + bytesOf(file.size() / 16, 4) + bytesOf(blob.size() / 16, 4));
        file += blob;
    }
    return file;
}

// A Berkeley DB hash file. The values are on one page, large ones in chains of further pages.
class BerkeleyFile {
  public:
    explicit BerkeleyFile(bool little = true, std::size_t pageSize = kPage)
        : little_(little), pageSize_(pageSize) {
        // The number that rpm keeps under the key 0.
        add(bytesOf(9, 4, little));
    }

    void add(const std::string& value) {
        const std::string key = std::string(1, '\1') + bytesOf(next_++, 4, little_);
        if (value.size() < 64) {
            addEntries(key, std::string(1, '\1') + value);
            return;
        }
        addEntries(key, std::string(1, '\3') + std::string(3, '\0') +
                            bytesOf(chains_.size() + 2, 4, little_) + bytesOf(value.size(), 4, little_));
        const std::size_t room = pageSize_ - kPageHeader;
        for (std::size_t at = 0; at < value.size(); at += room) {
            const std::string part = value.substr(at, room);
            const bool last = at + room >= value.size();
            std::string page =
                header(chains_.size() + 2, last ? 0 : chains_.size() + 3, 1, part.size(), 7) + part;
            page.resize(pageSize_, '\0');
            chains_.push_back(page);
        }
    }

    // A key and a value as they are stored.
    void addEntries(const std::string& key, const std::string& value) {
        for (const std::string& bytes : {key, value}) {
            stored_ = bytes + stored_;
            offsets_.push_back(pageSize_ - stored_.size());
        }
    }

    std::string bytes() const {
        std::string meta = std::string(12, '\0') + bytesOf(0x061561, 4, little_) + bytesOf(9, 4, little_) +
                           bytesOf(pageSize_, 4, little_) + std::string(1, '\0') + "\x08";
        meta.resize(32, '\0');
        meta += bytesOf(chains_.size() + 1, 4, little_);
        meta.resize(pageSize_, '\0');
        std::string hash = header(1, 0, offsets_.size(), pageSize_ - stored_.size(), 13);
        for (const std::size_t offset : offsets_) hash += bytesOf(offset, 2, little_);
        hash.resize(pageSize_ - stored_.size(), '\0');
        std::string file = meta + hash + stored_;
        for (const std::string& page : chains_) file += page;
        return file;
    }

    static constexpr std::size_t kPage = 512;
    static constexpr std::size_t kPageHeader = 26;

  private:
    std::string header(std::size_t page, std::size_t next, std::size_t entries, std::size_t inUse,
                       char type) const {
        return std::string(8, '\0') + bytesOf(page, 4, little_) + bytesOf(0, 4) + bytesOf(next, 4, little_) +
               bytesOf(entries, 2, little_) + bytesOf(inUse, 2, little_) + std::string(1, '\0') + type;
    }

    bool little_;
    std::size_t pageSize_;
    std::uint64_t next_ = 0;
    std::vector<std::size_t> offsets_;
    std::string stored_;  // at the end of the page
    std::vector<std::string> chains_;
};

}  // namespace toolkit
