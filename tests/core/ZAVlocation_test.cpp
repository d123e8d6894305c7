#include "core/ZAVlocation.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/Descriptors.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ZavIni.h"

namespace zav::test {
namespace {

using zavtest::LogRecorder;
using zavtest::Message;
using zavtest::OpenRule;
using zavtest::ZavIni;

const std::string kSystem = "ZAVLocation::getSystemLocation()";
const std::string kConstructor = "ZAVLocation::ZAVLocation()";

const Message kChecking = {2, 1, kSystem, "Checking ZAV location.."};
const Message kOpening = {2, 1, kSystem, "Opening a file [/etc/zav/zav.ini]"};
const Message kCannotOpen = {0, 1, "ZAVLocation::getSystemLocation", "Can't open file [/etc/zav/zav.ini]"};

Message differs(const std::string& system, const std::string& given) {
    return {1, 1, kConstructor,
            "Default location [" + system + "] is different that specified one [" + given + "]"};
}

Message found(const std::string& location) {
    return {2, 1, kConstructor, "ZAV location [" + location + "]"};
}

struct Found {
    std::wstring location;
    int registered;
    std::vector<Message> messages;
};

Found find(const char* exploiter, const wchar_t* directory) {
    LogRecorder recorder;
    ZAVlog log(1, LogRecorder::callback, &recorder);
    ZAVlocation location(&log, exploiter, directory);
    return {location.getLocation(), location.isRegistered(), recorder.messages};
}

Found findIn(const std::string& file, const char* exploiter = "alpha", const wchar_t* directory = nullptr) {
    const ZavIni ini(file);
    return find(exploiter, directory);
}

TEST(ZAVlocation, HomeDirectoryLineGivesTheDirectoryOfScanners) {
    const struct {
        const char* file;
        const wchar_t* location;
    } cases[] = {
        {"ZAV_HomeDirectory = /opt/zav\n", L"/opt/zav/bin"},
        {"ZAV_HomeDirectory =/opt/zav\n", L"/opt/zav/bin"},
        {"ZAV_HomeDirectory =  /opt/zav\n", L" /opt/zav/bin"},
        {"ZAV_HomeDirectory =\t/opt/zav\n", L"\t/opt/zav/bin"},
        {"ZAV_HomeDirectory = /opt/zav", L"/opt/zav/bin"},
        {"ZAV_HomeDirectory = /opt/zav/\n", L"/opt/zav/bin"},
        {"ZAV_HomeDirectory = //opt///zav//\n", L"/opt/zav/bin"},
        {"ZAV_HomeDirectory = /opt/zav \t\n", L"/opt/zav \t/bin"},
        {"ZAV_HomeDirectory = /opt/zav\r\n", L"/opt/zav\r/bin"},
        {"ZAV_HomeDirectory = /opt/a b=c:d\n", L"/opt/a b=c:d/bin"},
        {"ZAV_HomeDirectory =\n", L"/bin"},
        {"ZAV_HomeDirectory = \n", L"/bin"},
        {"ZAV_HomeDirectory =", L"/bin"},
        {"ZAV_HomeDirectory = /one\nZAV_HomeDirectory = /two\n", L"/two/bin"},
        {"ZAV_HomeDirectory = /one\nZAV_HomeDirectory =\n", L"/bin"},
        {"[zav]\n# note\n\nOther = 1\nZAV_HomeDirectory = /opt/zav\n; end\n", L"/opt/zav/bin"},
    };
    for (const auto& each : cases) EXPECT_EQ(findIn(each.file).location, each.location) << each.file;
}

TEST(ZAVlocation, OnlyTheExactKeyAtTheStartOfALineCounts) {
    const std::string others[] = {
        "",
        "\n\n",
        " ZAV_HomeDirectory = /opt/zav\n",
        "\tZAV_HomeDirectory = /opt/zav\n",
        "#ZAV_HomeDirectory = /opt/zav\n",
        "ZAV_HomeDirectory=/opt/zav\n",
        "ZAV_HomeDirectory  = /opt/zav\n",
        "ZAV_HomeDirectory\t= /opt/zav\n",
        "ZAV_HomeDirectory \n",
        "ZAV_HomeDirectory",
        "zav_homedirectory = /opt/zav\n",
        "ZAV_HOMEDIRECTORY = /opt/zav\n",
        "ZAV_HomeDirectories = /opt/zav\n",
    };
    for (const std::string& file : others) EXPECT_EQ(findIn(file).location, L"") << file;
    const std::string lists[] = {
        " ZAV_Exploiters = alpha\n", "ZAV_Exploiters=alpha\n",  "ZAV_Exploiters  = alpha\n",
        "zav_exploiters = alpha\n",  "ZAV_Exploiter = alpha\n", "x\\\nZAV_Exploiters\n= alpha\n",
    };
    for (const std::string& file : lists) EXPECT_EQ(findIn(file).registered, 0) << file;
}

TEST(ZAVlocation, ExploiterIsRegisteredWhenAListHoldsItsExactName) {
    const struct {
        const char* list;
        const char* exploiter;
        int registered;
    } cases[] = {
        {" alpha:beta:gamma\n", "alpha", 1},
        {" alpha:beta:gamma\n", "beta", 1},
        {" alpha:beta:gamma\n", "gamma", 1},
        {" alpha:beta:gamma", "gamma", 1},
        {"alpha:beta\n", "alpha", 1},
        {" alpha:beta:gamma\n", "Beta", 0},
        {" alpha:beta:gamma\n", "bet", 0},
        {" alpha:beta:gamma\n", "beta ", 0},
        {" alpha:beta:gamma\n", "eta", 0},
        {" alpha:beta:gamma\n", "alpha:beta", 0},
        {" a: b\n", "a", 1},
        {" a: b\n", "b", 0},
        {" a: b\n", " b", 1},
        {"  a\n", " a", 1},
        {"  a\n", "a", 0},
        {" my product:a\n", "my product", 1},
        {" a,b\n", "a", 0},
        {" ::a::b::\n", "a", 1},
        {" ::a::b::\n", "b", 1},
        {" ::a::b::\n", "", 0},
        {"\n", "", 0},
        {" alpha:beta\r\n", "alpha", 1},
        {" alpha:beta\r\n", "beta", 0},
        {" alpha:beta\r\n", "beta\r", 1},
    };
    for (const auto& each : cases) {
        const std::string file = std::string("ZAV_Exploiters =") + each.list;
        EXPECT_EQ(findIn(file, each.exploiter).registered, each.registered) << file << each.exploiter;
    }
}

TEST(ZAVlocation, EveryExploiterLineOfTheFileIsRead) {
    const std::string file = "ZAV_Exploiters = alpha\nZAV_HomeDirectory = /a\nZAV_Exploiters = beta:gamma\n";
    for (const char* const name : {"alpha", "beta", "gamma"}) EXPECT_EQ(findIn(file, name).registered, 1);
    EXPECT_EQ(findIn(file, "delta").registered, 0);
}

TEST(ZAVlocation, LongLinesAreReadInPiecesOf1023Bytes) {
    const std::string key = "ZAV_HomeDirectory = ";
    EXPECT_EQ(findIn(std::string(1023, 'x') + key + "/opt\n").location, L"/opt/bin");
    EXPECT_EQ(findIn(std::string(2046, 'x') + key + "/opt\n").location, L"/opt/bin");
    EXPECT_EQ(findIn(std::string(1022, 'x') + key + "/opt\n").location, L"");
    EXPECT_EQ(findIn(std::string(1024, 'x') + key + "/opt\n").location, L"");
    EXPECT_EQ(findIn(key + std::string(2000, 'd') + "\n").location,
              std::wstring(1023 - key.size(), L'd') + L"/bin");
    EXPECT_EQ(findIn(key + std::string(1023 - key.size(), 'd') + "\n").location,
              std::wstring(1023 - key.size(), L'd') + L"/bin");

    const std::string list = "ZAV_Exploiters = ";
    const std::string filled = list + std::string(1023 - list.size() - 4, 'x') + ":alphabet\n";
    EXPECT_EQ(findIn(filled, "alphabet").registered, 0);
    EXPECT_EQ(findIn(filled, "alp").registered, 1);
    EXPECT_EQ(findIn(std::string(1023, 'x') + list + "alphabet\n", "alphabet").registered, 1);
}

TEST(ZAVlocation, BytesAreWidenedOneByOneAsSignedCharacters) {
    const std::wstring expected = {
        L'/', static_cast<wchar_t>(-61), static_cast<wchar_t>(-92), L'/', L'b', L'i', L'n'};
    EXPECT_EQ(findIn("ZAV_HomeDirectory = /\xC3\xA4\n").location, expected);
}

TEST(ZAVlocation, GivenDirectoryWinsAndIsNormalised) {
    const std::string file = "ZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = alpha\n";
    const struct {
        const wchar_t* given;
        const wchar_t* location;
    } cases[] = {
        {L"/usr//local///zav/bin", L"/usr/local/zav/bin"},
        {L"/opt/zav", L"/opt/zav"},
        {L"/usr/zav//", L"/usr/zav/"},
        {L"////", L"/"},
        {L"", L""},
        {L"relative//bin", L"relative/bin"},
    };
    for (const auto& each : cases) {
        const Found found = findIn(file, "alpha", each.given);
        EXPECT_EQ(found.location, each.location);
        EXPECT_EQ(found.registered, 1);
    }
}

TEST(ZAVlocation, MessagesWithoutAGivenDirectory) {
    EXPECT_EQ(findIn("ZAV_HomeDirectory = /opt/zav/\n").messages,
              (std::vector<Message>{kChecking, kOpening, found("/opt/zav/bin")}));
    EXPECT_EQ(findIn("nothing\n").messages, (std::vector<Message>{kChecking, kOpening, found("")}));
}

TEST(ZAVlocation, MessagesWithAGivenDirectory) {
    const std::string file = "ZAV_HomeDirectory = /opt/zav\n";
    EXPECT_EQ(findIn(file, "alpha", L"/opt/zav/bin").messages,
              (std::vector<Message>{kChecking, kOpening, found("/opt/zav/bin")}));
    EXPECT_EQ(findIn(file, "alpha", L"/opt//zav///bin").messages,
              (std::vector<Message>{kChecking, kOpening, found("/opt/zav/bin")}));
    EXPECT_EQ(
        findIn(file, "alpha", L"/opt//zav").messages,
        (std::vector<Message>{kChecking, kOpening, differs("/opt/zav/bin", "/opt//zav"), found("/opt/zav")}));
    EXPECT_EQ(findIn(file, "alpha", L"/opt/zav/bin/").messages,
              (std::vector<Message>{kChecking, kOpening, differs("/opt/zav/bin", "/opt/zav/bin/"),
                                    found("/opt/zav/bin/")}));
}

TEST(ZAVlocation, TheFilesDirectoryIsComparedBeforeItIsNormalised) {
    EXPECT_EQ(findIn("ZAV_HomeDirectory = /opt/zav/\n", "alpha", L"/opt/zav/bin").messages,
              (std::vector<Message>{kChecking, kOpening, differs("/opt/zav//bin", "/opt/zav/bin"),
                                    found("/opt/zav/bin")}));
}

TEST(ZAVlocation, MissingFileIsLoggedAndLeavesNothingOrTheGivenDirectory) {
    const Found nothing = find("alpha", nullptr);
    EXPECT_EQ(nothing.location, L"");
    EXPECT_EQ(nothing.registered, 0);
    EXPECT_EQ(nothing.messages, (std::vector<Message>{kChecking, kOpening, kCannotOpen, found("")}));
    const Found given = find("alpha", L"/usr/zav");
    EXPECT_EQ(given.location, L"/usr/zav");
    EXPECT_EQ(given.registered, 0);
    EXPECT_EQ(given.messages, (std::vector<Message>{kChecking, kOpening, kCannotOpen, differs("", "/usr/zav"),
                                                    found("/usr/zav")}));
}

TEST(ZAVlocation, FileThatMayNotBeReadIsLikeAMissingOne) {
    const OpenRule denied(zavtest::kZavIni, EACCES);
    EXPECT_EQ(find("alpha", nullptr).messages,
              (std::vector<Message>{kChecking, kOpening, kCannotOpen, found("")}));
}

TEST(ZAVlocation, ReadErrorIsLikeTheEndOfTheFile) {
    const zavtest::ScratchDir directory;
    const OpenRule unreadable(zavtest::kZavIni, directory.path());
    EXPECT_EQ(find("alpha", nullptr).messages, (std::vector<Message>{kChecking, kOpening, found("")}));
}

TEST(ZAVlocation, EmptySystemLocationEqualsAnEmptyGivenDirectory) {
    EXPECT_EQ(findIn("", "alpha", L"").messages, (std::vector<Message>{kChecking, kOpening, found("")}));
}

TEST(ZAVlocation, FileIsReadOnceByEachObjectAndClosed) {
    const std::size_t before = zavtest::openDescriptors();
    {
        const ZavIni ini("ZAV_HomeDirectory = /one\n");
        EXPECT_EQ(find("alpha", nullptr).location, L"/one/bin");
        EXPECT_EQ(ini.opens(), 1);
        EXPECT_EQ(find("alpha", L"/given").location, L"/given");
        EXPECT_EQ(ini.opens(), 2);
    }
    EXPECT_EQ(findIn("ZAV_HomeDirectory = /two\n").location, L"/two/bin");
    EXPECT_EQ(zavtest::openDescriptors(), before);
}

TEST(ZAVlocation, SystemLocationCanBeAskedAgainAndKeepsTheRegistration) {
    const ZavIni ini("ZAV_HomeDirectory = /opt//zav\nZAV_Exploiters = alpha\n");
    ZAVlocation location(nullptr, "beta", nullptr);
    EXPECT_EQ(location.isRegistered(), 0);
    EXPECT_EQ(location.getSystemLocation("alpha"), L"/opt//zav/bin");
    EXPECT_EQ(location.isRegistered(), 1);
    EXPECT_EQ(location.getSystemLocation("beta"), L"/opt//zav/bin");
    EXPECT_EQ(location.isRegistered(), 1);
    EXPECT_EQ(location.getLocation(), L"/opt/zav/bin");
}

TEST(ZAVlocation, WorksWithoutALog) {
    EXPECT_EQ(ZAVlocation(nullptr, "alpha", nullptr).getLocation(), L"");
    const ZavIni ini("ZAV_HomeDirectory = /opt/zav\n");
    EXPECT_EQ(ZAVlocation(nullptr, "alpha", L"/usr//zav").getLocation(), L"/usr/zav");
}

TEST(ZAVlocation, EveryRunOfSlashesBecomesOne) {
    const ZAVlocation location(nullptr, "alpha", nullptr);
    const struct {
        const wchar_t* before;
        const wchar_t* after;
    } cases[] = {{L"", L""},        {L"/", L"/"},       {L"//", L"/"},           {L"/////", L"/"},
                 {L"a//b", L"a/b"}, {L"a/b/", L"a/b/"}, {L"a///b////", L"a/b/"}, {L"//a/.//..", L"/a/./.."}};
    for (const auto& each : cases) {
        std::wstring directory = each.before;
        location.normalizeDir(directory);
        EXPECT_EQ(directory, each.after);
    }
    EXPECT_EQ(location.getDirectorySeparator(), L"/");
}

}  // namespace
}  // namespace zav::test
