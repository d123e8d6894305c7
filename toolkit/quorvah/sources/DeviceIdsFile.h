#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvah {

// A pci.ids or usb.ids file. Ids are lower-case hexadecimal digits ("8086", "03"). Names are parts of the text and
// empty for unknown ids. The file is large and few entries are needed, so it is searched instead of indexed. Vendors
// and classes are cached.
class DeviceIdsFile {
  public:
    // REQUIRES: `text` outlives this object and the names.
    explicit DeviceIdsFile(std::string_view text) : text_(text) {}

    std::string_view vendor(std::string_view vendor);
    std::string_view device(std::string_view vendor, std::string_view device);
    std::string_view subsystem(std::string_view vendor, std::string_view device,
                               std::string_view subsystemVendor, std::string_view subsystem);

    std::string_view baseClass(std::string_view baseClass);
    std::string_view subclass(std::string_view baseClass, std::string_view subclass);

    // The value of the "Version:" line at the start of the file.
    std::string_view version() const;

  private:
    struct Entry {
        std::string_view name;
        std::string_view children;  // the indented lines that follow
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
