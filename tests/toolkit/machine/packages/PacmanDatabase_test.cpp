#include "toolkit/machine/packages/PacmanDatabase.h"

#include <gtest/gtest.h>

#include <string>

namespace toolkit {
namespace {

constexpr char kPacman[] =
    "%NAME%\nzlib\n\n%VERSION%\n1:1.3.1-2\n\n%BASE%\nzlib\n\n%DESC%\nCompression "
    "library\n\n%ARCH%\nx86_64\n\n"
    "%INSTALLDATE%\n1727000000\n\n%PACKAGER%\nA B <a@b.org>\n\n%SIZE%\n357376\n\n%DEPENDS%\nglibc\nbash\n\n";

TEST(PacmanDesc, AFileGivesItsFields) {
    const PacmanPackage package = readPacmanDesc(kPacman);
    EXPECT_EQ("zlib", package.name);
    EXPECT_EQ("1:1.3.1-2", package.version);
    EXPECT_EQ("x86_64", package.architecture);
    EXPECT_EQ("A B <a@b.org>", package.packager);
    EXPECT_EQ("Compression library", package.description);
    EXPECT_EQ("zlib", package.base);
    EXPECT_EQ("1727000000", package.installDate);
    EXPECT_EQ("357376", package.size);
}

TEST(PacmanDesc, TheSecondLineOfAListIsNotAHeading) {
    const PacmanPackage package = readPacmanDesc("%GROUPS%\nbase\n%NAME%\nwrong\n\n%NAME%\nright\nsecond\n");
    EXPECT_EQ("right", package.name);
}

TEST(PacmanDesc, HeadingsWithoutValueLeaveTheFieldEmpty) {
    const PacmanPackage package = readPacmanDesc("%NAME%\n\n%VERSION%\r\n2-1\r\n\r\n%DESC%");
    EXPECT_EQ("", package.name);
    EXPECT_EQ("2-1", package.version);
    EXPECT_EQ("", package.description);
}

}  // namespace
}  // namespace toolkit
