#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/ScratchDir.h"

namespace {

// Whether the file is valid according to the schema. The test fails when xmllint cannot decide that.
bool isValid(const std::filesystem::path& file) {
    const std::string command =
        "xmllint --noout --schema '" QUORVIS_SCHEMA "' '" + file.string() + "' >/dev/null 2>&1";
    const int status = std::system(command.c_str());
    constexpr int kInvalid = 3;
    EXPECT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == kInvalid)) << status;
    return status == 0;
}

}  // namespace

TEST(SignatureSchema, AcceptsTheExamples) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(QUORVIS_SIGNATURES)) {
        EXPECT_TRUE(isValid(entry.path())) << entry.path();
        ++count;
    }
    EXPECT_EQ(count, 6);
}

TEST(SignatureSchema, RefusesWhatTheScannerRefuses) {
    const std::string cases[] = {
        "<Match><Exec path='/x'/></Match>",
        "<Match><File/></Match>",
        "<Match><File path='/x' regex='a'/></Match>",
        "<Match><File path='/x' min='few'/></Match>",
        "<Match><File path='/x' id='a.b'/></Match>",
        "<Match><File path='/x'/><File path='/y'/></Match>",
        "<Match><All/></Match>",
        "<Match><Not><File path='/x'/><File path='/y'/></Not></Match>",
        "<Match><Content path='/x'/></Match>",
        "<Match><Content path='/x' regex='a'><Capture group='33' name='a'/></Content></Match>",
        "<Match><File path='/x'/></Match><Preset name='a'/>",
        "<Preset name='a'/><Preset name='a'/><Match><File path='/x'/></Match>",
        "<Each><File path='/x'/></Each>",
        "<Each><Compare id='a' left='1' equals='1'/></Each>",
        "<Each/>",
        "<Each><File id='a' path='/x'/><File path='/x'/></Each>",
        "<Each><File id='a' path='/x'/><File id='a' path='/x'/></Each>",
        "<Each><File id='a' path='/x'/><Compare id='b' left='1' equals='1'/></Each>",
        "<Each><File id='a' path='/x'/><File id='b' path='/x'/><File id='c' path='/x'/>"
        "<File id='d' path='/x'/><File id='e' path='/x'/></Each>",
        "<Output/>",
        "<Match><Property path='/x' format='json' key='a'><Value key='b'/></Property></Match>",
        "<Match><Property path='/x' format='json' key='a'><Value key='b' name='n' "
        "optional='no'/></Property></Match>",
        "<Match><Xml path='/x' select='a'><Value key='b' name='n'/></Xml></Match>",
        "<Match><File path='/x'/></Match><Output><Variable name='a'/></Output>",
        "<Match><Compare left='1' equals='1'><Capture of='a' regex='a' group='0' "
        "name='n'/></Compare></Match>",
        "<Match><File path='/x'><Capture of='name' regex='a' name='n'/></File></Match>",
        "<Detection/>",
        "<Detection><Output/></Detection>",
        "<Detection><Match><File path='/x'/></Match><Preset name='a'/></Detection>",
        "<Match><File path='/x'/></Match><Detection><Match><File path='/x'/></Match></Detection>",
        "<Detection><Match><File path='/x'/></Match><Output><Variable name='a' value=''/>"
        "<Variable name='a' value=''/></Output></Detection>",
    };
    const zavtest::ScratchDir dir;
    const auto write = [&](const std::string& inner) {
        return dir.write("sig.xml",
                         "<Signatures><Signature guid='G' name='N'>" + inner + "</Signature></Signatures>");
    };
    EXPECT_TRUE(isValid(write("<Match><File path='/x'/></Match>")));
    EXPECT_TRUE(
        isValid(write("<Match><Property path='/x' format='json' each='a.*' key='b' values='all'>"
                      "<Value key='c' name='n' optional='true'/></Property></Match>")));
    EXPECT_TRUE(
        isValid(write("<Each><Glob id='f' pattern='/x/*'/><Component id='c' path='${f.path}' format='go'/>"
                      "<File id='g' path='/x'/><File id='h' path='/x'/></Each>")));
    const std::string detection =
        "<Detection><Each><File id='a' path='/x'/></Each><Match><File id='b' path='/x'/></Match>"
        "<Output><Variable name='a' value=''/></Output></Detection>";
    EXPECT_TRUE(isValid(write("<Metadata/><Preset name='a'/>" + detection + detection)));
    for (const char* const leaf :
         {"File path='/x'", "Glob pattern='/x'", "Package name='x'", "Process", "SwidTag", "Elf path='/x'",
          "Xml path='/x' select='/a'", "FileVersion path='/x' format='jar'",
          "Component path='/x' format='go'", "Property path='/x' format='json' key='a'"}) {
        const std::string text(leaf);
        const std::string name = text.substr(0, text.find(' '));
        EXPECT_TRUE(isValid(write("<Match><" + text + "><Capture of='name' regex='a' group='0' name='n'/></" +
                                  name + "></Match>")))
            << leaf;
    }
    for (const std::string& inner : cases) EXPECT_FALSE(isValid(write(inner))) << inner;
}
