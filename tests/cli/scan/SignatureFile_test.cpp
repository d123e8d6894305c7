#include "cli/scan/SignatureFile.h"

#include <gtest/gtest.h>

#include "cli/system/Failure.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

using Body = std::optional<std::string>;

class SignatureFileTest : public testing::Test {
  protected:
    SignatureFile read(const std::string& content) {
        return readSignatureFile(scratch_.write("s.xml", content).string());
    }
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    static std::string refusal(const std::string& argument) {
        try {
            signatureFilePaths({argument});
        } catch (const Failure& failure) {
            EXPECT_EQ(kExitBadUsage, failure.status());
            return failure.what();
        }
        return "not refused";
    }

    zavtest::ScratchDir scratch_;
};

TEST_F(SignatureFileTest, BodyIsTheContentOfTheRoot) {
    const struct {
        const char* content;
        const char* body;
    } cases[] = {
        {"<Signatures> <a/> </Signatures>", " <a/> "},
        {"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!-- > --><Signatures\n>\n<a>x</a>\n</Signatures >\n",
         "\n<a>x</a>\n"},
        {"\xef\xbb\xbf<Signatures><a/></Signatures><!-- end -->", "<a/>"},
        {"<?xml version=\"1.0\" encoding=\"US-ASCII\"?><Signatures><a/></Signatures>", "<a/>"},
        {"<Signatures><!-- </Signatures> --><![CDATA[</Signatures>]]></Signatures>",
         "<!-- </Signatures> --><![CDATA[</Signatures>]]>"},
        {"<Signatures>gr\xc3\xb6\xc3\x9f</Signatures>", "gr\xc3\xb6\xc3\x9f"},
        {"<Signatures></Signatures>", ""},
        {"<Signatures/>", ""},
    };
    for (const auto& [content, body] : cases) EXPECT_EQ(Body(body), read(content).body) << content;
}

TEST_F(SignatureFileTest, FilesThatCannotBeJoinedHaveNoBody) {
    for (const char* content : {
             "",
             "no XML",
             "<Signatures><a></Signatures>",
             "<Signatures/><Signatures/>",
             "<Signature guid=\"g\"/>",
             "<Signatures language=\"1\"/>",
             "<Signatures xmlns:x=\"urn:x\"/>",
             "<!DOCTYPE Signatures><Signatures/>",
             "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Signatures/>",
             "<Signatures>gr\xf6\xdf</Signatures>",
         })
        EXPECT_EQ(std::nullopt, read(content).body) << content;
}

TEST_F(SignatureFileTest, NamesAreFoundByIdentifierInLowerCase) {
    const SignatureFile file = read(
        "<Signatures><Signature guid=\"A-1\" name=\"One &amp; two\"><Signature guid=\"deep\"/></Signature>"
        "<Signature name=\"One &amp; two\" guid=\"a-1\"/><Signature guid=\"b\"/>"
        "<Signature guid=\"c\" name=\"C\"/><Signature guid=\"C\" name=\"D\"/><Signature guid=\"d\" "
        "name=\"${x}\"/>"
        "</Signatures>");
    EXPECT_EQ(6U, file.count);
    EXPECT_EQ((std::map<std::string, std::string>{{"a-1", "One & two"}, {"b", ""}, {"c", ""}, {"d", ""}}),
              file.names);
}

TEST_F(SignatureFileTest, NamesOfOtherEncodingsAreUtf8) {
    const std::map<std::string, std::string> names{{"g", "gr\xc3\xb6\xc3\x9f"}};
    for (const char* declaration : {"", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"})
        EXPECT_EQ(names, read(std::string(declaration) +
                              "<Signatures><Signature guid=\"g\" name=\"gr\xf6\xdf\"/></Signatures>")
                             .names);
}

TEST_F(SignatureFileTest, DirectoryStandsForItsXmlFilesInOrder) {
    scratch_.write("d/b.xml", "");
    scratch_.write("d/a.xml", "");
    scratch_.write("d/c.txt", "");
    scratch_.write("d/e/f.xml", "");
    const std::string other = scratch_.write("other", "").string();
    EXPECT_EQ((std::vector<std::string>{other, path("d/a.xml"), path("d/b.xml")}),
              signatureFilePaths({other, path("d")}));
}

TEST_F(SignatureFileTest, OtherFilesAreRefused) {
    EXPECT_EQ("cannot read '" + path("none") + "': No such file or directory", refusal(path("none")));
    EXPECT_EQ("cannot read '/dev/null': it is neither a file nor a directory", refusal("/dev/null"));
    EXPECT_EQ("cannot read '" + path("") + "': it is a directory without *.xml files", refusal(path("")));
    const std::string quoted = scratch_.write("a\"b.xml", "").string();
    EXPECT_NE(std::string::npos, refusal(quoted).find("double quotes"));
}

TEST_F(SignatureFileTest, EntriesHoldNameAndPublisherAsWritten) {
    const SignatureFile file = read(
        "<Signatures><Signature guid=\"Z.A\" name=\"A ${x}\"><Metadata><Name>N</Name><Publisher>P &amp; "
        "Q</Publisher><Publisher>other</Publisher></Metadata><Match><Publisher>no</Publisher></Match></"
        "Signature>"
        "<Signature name=\"without identifier\"><Metadata><Publisher>no</Publisher></Metadata></Signature>"
        "<Signature guid=\"z.a\" name=\"B\"/></Signatures>");
    ASSERT_EQ(2U, file.entries.size());
    EXPECT_EQ("Z.A", file.entries[0].guid);
    EXPECT_EQ("A ${x}", file.entries[0].name);
    EXPECT_EQ("P & Q", file.entries[0].publisher);
    EXPECT_EQ("z.a", file.entries[1].guid);
    EXPECT_EQ("", file.entries[1].publisher);
}

}  // namespace
}  // namespace zavcli
