// The files that a scanner has recorded, as it read them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace zavcli {

struct RecordedFile {
    enum class Kind { File, Directory, Link };

    Kind kind = Kind::File;
    std::uint32_t permissions = 0;  // none of a file that the scanner could not read
    std::uint32_t user = 0;
    std::uint32_t group = 0;
    std::uint32_t time = 0;    // of the last change, in seconds since 1970
    std::string content = {};  // of a link: its target
};

// By path, without a slash at the beginning. A directory comes before what it contains.
using RecordedFiles = std::map<std::string, RecordedFile>;

// Reads a record, which is a cpio archive ("newc"). Several processes write it, so a path may occur several times: the
// largest content counts. Throws Failure if the record is cut or damaged.
RecordedFiles parseRecord(std::string_view record);
RecordedFiles readRecord(const std::string& path);

}  // namespace zavcli
