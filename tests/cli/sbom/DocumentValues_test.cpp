#include "cli/sbom/DocumentValues.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "cli/sbom/BillWriter.h"
#include "cli/system/Failure.h"

namespace zavcli {
namespace {

TEST(DocumentValues, OnlyWholeCpeNamesAreWritten) {
    for (const char* name : {"cpe:2.3:a:gnu:bash:5.2:*:*:*:*:*:*:*", "cpe:2.3:o:x:y:-:*:*:*:*:*:*:*",
                             "cpe:2.3:a:x:a\\:b:1:*:*:*:*:*:*:*"})
        EXPECT_TRUE(isCpe23(name)) << name;
    for (const char* name :
         {"", "cpe:2.3:", "cpe:/a:gnu:bash", "cpe:2.3:a:gnu:bash:5.2", "cpe:2.3:x:a:b:1:*:*:*:*:*:*:*",
          "cpe:2.3:a:gnu:bash::*:*:*:*:*:*:*", "cpe:2.3:a:gnu:bash:5 2:*:*:*:*:*:*:*",
          "cpe:2.3:a:gnu:bash:5.2:*:*:*:*:*:*:", "cpe:2.3:a:gnu:bash:5.2:*:*:*:*:*:*:*:*"})
        EXPECT_FALSE(isCpe23(name)) << name;
}

TEST(DocumentValues, AddressesAndPackageUrlsAreEncoded) {
    EXPECT_TRUE(isWebAddress("https://www.example.com/~x?y=1"));
    for (const char* text :
         {"", "javascript:alert(1)", "https://a b", "https://x\n", "https://gr\xc3\xb6", "https://<x>"})
        EXPECT_FALSE(isWebAddress(text)) << text;
    EXPECT_TRUE(isCleanPackageUrl("pkg:deb/debian/git@1:2.39?arch=amd64"));
    for (const char* text : {"", "pkg:deb", "pkg:npm/a b@1", "pkg:npm/gr\xc3\xb6\xc3\x9f"})
        EXPECT_FALSE(isCleanPackageUrl(text)) << text;
}

TEST(DocumentValues, MailAddressIsRemovedFromAName) {
    EXPECT_EQ("A Team", nameWithoutMail("A Team <a@example.com>"));
    EXPECT_EQ("A Team", nameWithoutMail("A Team"));
    EXPECT_EQ("<a@example.com>", nameWithoutMail("<a@example.com>"));
    EXPECT_EQ("", nameWithoutMail(""));
}

class DocumentTimeTest : public testing::Test {
  protected:
    void TearDown() override { unsetenv("SOURCE_DATE_EPOCH"); }
    static DocumentTime with(const char* value) {
        setenv("SOURCE_DATE_EPOCH", value, 1);
        return documentTime();
    }
};

TEST_F(DocumentTimeTest, EnvironmentChoosesTheTime) {
    EXPECT_EQ("2001-09-09T01:46:40Z", isoTime(with("1000000000").time));
    EXPECT_TRUE(with("0").chosen);
    EXPECT_FALSE(with("").chosen);
    unsetenv("SOURCE_DATE_EPOCH");
    EXPECT_FALSE(documentTime().chosen);
}

TEST_F(DocumentTimeTest, OtherValuesAreRefused) {
    for (const char* value : {"x", "1x", "-1", " 1", "1.5", "253402300800", "99999999999999999999"})
        EXPECT_THROW(with(value), Failure) << value;
}

}  // namespace
}  // namespace zavcli
