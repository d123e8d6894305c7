#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

// The text of a pci.ids or usb.ids file. Ids are lower-case hex of the file's width ("8086", "03"); a name is
// a part of the file's text, empty when the file does not know the id. The file is large and few of its
// entries are asked for, so it is searched rather than indexed; the vendors and classes once found are
// remembered.
class DeviceIdsFile {
  public:
    // `text` outlives the names.
    explicit DeviceIdsFile(std::string_view text) : text_(text) {}

    std::string_view vendor(std::string_view vendor);
    std::string_view device(std::string_view vendor, std::string_view device);
    std::string_view subsystem(std::string_view vendor, std::string_view device,
                               std::string_view subsystemVendor, std::string_view subsystem);

    std::string_view baseClass(std::string_view baseClass);
    std::string_view subclass(std::string_view baseClass, std::string_view subclass);

    // What the "Version:" line at the head of the file says.
    std::string_view version() const;

  private:
    struct Entry {
        std::string_view name;
        std::string_view children;  // the indented lines below it
    };
    struct KnownEntry {
        std::string head;
        Entry entry;
    };

    const Entry& topEntry(std::string_view prefix, std::string_view id);
    static Entry findTop(std::string_view text, std::string_view head);
    static Entry findChild(std::string_view children, std::size_t depth, std::string_view id);

    std::string_view text_;
    std::vector<KnownEntry> known_;
};

}  // namespace toolkit::quorvah
