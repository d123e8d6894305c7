#include "cli/sbom/Digest.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

// Known values of FIPS 180-4 and RFC 9562.
TEST(Digest, PiecesGiveTheHashesOfTheWhole) {
    Digest digest;
    digest.add("a");
    digest.add("");
    digest.add("bc");
    const Hashes hashes = digest.finish();
    EXPECT_EQ("a9993e364706816aba3e25717850c26c9cd0d89d", hashes.sha1);
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad", hashes.sha256);
}

TEST(Digest, NameUuidIsOfVersionFiveAndDependsOnTheTextOnly) {
    EXPECT_EQ("3d3ed9d2-aa3d-5fa6-90e8-ed662e90f559", nameUuid("https://www.example.com/"));
    EXPECT_EQ(nameUuid("a"), nameUuid("a"));
    EXPECT_NE(nameUuid("a"), nameUuid("b"));
}

}  // namespace
}  // namespace zavcli
