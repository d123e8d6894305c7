#include "toolkit/quorvah/sources/FileSystemIdentity.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"

namespace toolkit::quorvah {
namespace {

std::optional<FileSystemIdentity> identityOf(const std::string& content) {
    const zavtest::ScratchDir folder;
    const auto file = folder.write("device", content);
    return readFileSystemIdentity(kest::Descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC)));
}

void put(std::string& bytes, std::size_t offset, std::string_view text) {
    bytes.replace(offset, text.size(), text);
}

// A swap space of 256 pages: the header at 1024 with version, last page, UUID and label, and the mark at the page's end.
std::string swapSpace() {
    std::string bytes(256 * 4096, '\0');
    put(bytes, 1024, std::string("\x01\0\0\0\xff\0\0\0\0\0\0\0", 12));
    put(bytes, 1036, "\x01\x23\x45\x67\x89\xab\xcd\xef\x01\x23\x45\x67\x89\xab\xcd\xef");
    put(bytes, 1052, "SWAP-LABEL");
    put(bytes, 4086, "SWAPSPACE2");
    return bytes;
}

TEST(FileSystemIdentity, IsThatOfTheSuperblock) {
    const auto swap = identityOf(swapSpace());
    ASSERT_TRUE(swap);
    EXPECT_EQ(swap->type, "swap");
    EXPECT_EQ(swap->usage, "other");
    EXPECT_EQ(swap->label, "SWAP-LABEL");
    EXPECT_EQ(swap->uuid, "01234567-89ab-cdef-0123-456789abcdef");
}

TEST(FileSystemIdentity, IsUnknownWithoutASuperblock) {
    EXPECT_FALSE(identityOf(std::string(1 << 20, '\0')));
    EXPECT_FALSE(identityOf("text"));
    EXPECT_FALSE(identityOf(""));
    EXPECT_FALSE(readFileSystemIdentity(kest::Descriptor()));
}

TEST(FileSystemIdentity, OfACutDeviceIsReadOrUnknown) {
    const std::string whole = swapSpace();
    for (const std::size_t size : {std::size_t{1}, std::size_t{1024}, std::size_t{4095}, std::size_t{4096}}) {
        const auto identity = identityOf(whole.substr(0, size));
        EXPECT_TRUE(!identity || identity->type == "swap") << size;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
