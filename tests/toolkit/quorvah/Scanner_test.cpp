// The built scanner as a process: exit status, messages and output.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <set>
#include <string>
#include <vector>

#include "tests/toolkit/quorvah/LoginRecords.h"
#include "tests/toolkit/quorvah/ScannerTest.h"
#include "toolkit/quorvah/groups/GroupTable.h"

using quorvahtest::allDisplayNames;
using quorvahtest::Element;
using quorvahtest::Finished;
using quorvahtest::readOutput;
using quorvahtest::runScanner;
using toolkit::quorvah::allGroups;
using toolkit::quorvah::findGroup;
using toolkit::quorvah::Group;
using zavtest::readAll;
namespace fs = std::filesystem;

namespace {

const std::string kServer = QUORVAH_TEST_TREES "/x86-server";

class Scanner : public quorvahtest::ScannerTest {};

}  // namespace

TEST_F(Scanner, WritesEveryFieldOfEveryInstanceInOrder) {
    ASSERT_EQ(scan(allDisplayNames()).status, 0);
    const std::vector<Element> all = elements();
    EXPECT_GT(all.size(), 10U);
    for (const Element& element : all) {
        const Group* const group = findGroup(element.group);
        ASSERT_NE(group, nullptr) << element.group;
        ASSERT_EQ(element.fields.size(), group->fields.size()) << element.group;
        for (std::size_t i = 0; i < group->fields.size(); ++i) {
            EXPECT_EQ(element.fields[i].first, group->fields[i].name);
        }
    }
}

TEST_F(Scanner, WritesDocumentsOfTheXmlSchema) {
    const std::string schema = QUORVAH_XML_SCHEMA;
    const auto validate = [&] {
        return zavtest::runProgram("/usr/bin/xmllint", {"--noout", "--schema", schema, out()});
    };
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{},
                                               {"--sanitize", "--pretty"},
                                               {"--root", kServer, "--raw"},
                                               {"--root", kServer, "--no-volatile", "--sanitize"},
                                               {"--root", QUORVAH_TEST_TREES "/workstation"},
                                               {"--root", QUORVAH_TEST_TREES "/arm64-board"},
                                               {"--root", QUORVAH_TEST_TREES "/kvm-guest"}}) {
        ASSERT_EQ(scan(allDisplayNames(), options).status, 0);
        const Finished valid = validate();
        EXPECT_EQ(valid.status, 0) << valid.errors;
    }
    ASSERT_EQ(scan({"Memory"}, {"--root", kServer}).status, 0);
    const std::string right = readAll(out());
    for (const auto& [before, after] : std::vector<std::pair<std::string, std::string>>{
             {"65689512", "-65689512"}, {"<DeviceID>memory</DeviceID>", ""}, {"Memory>", "Memories>"}}) {
        std::string wrong = right;
        ASSERT_NE(std::string::npos, wrong.find(before)) << before;
        wrong.replace(wrong.find(before), before.size(), after);
        dir_.write("out.xml", wrong);
        EXPECT_NE(validate().status, 0) << after;
    }
}

TEST_F(Scanner, ListsTheFieldsOfAllGroups) {
    const Finished text = runScanner({"--list-fields"});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.output.find("\n5 Storage\n"), std::string::npos) << text.output;
    const Finished json = runScanner({"--list-fields", "--format", "json"});
    EXPECT_EQ(json.status, 0);
    for (const Group* const group : allGroups()) {
        EXPECT_NE(json.output.find("\"element\": \"" + std::string(group->xmlName) + "\""),
                  std::string::npos);
    }
}

TEST_F(Scanner, WritesPureAscii) {
    ASSERT_EQ(scan(allDisplayNames()).status, 0);
    const std::string text = readAll(out());
    EXPECT_GT(text.size(), 1000U);
    EXPECT_TRUE(
        std::ranges::all_of(text, [](char c) { return (c >= 0x20 && c <= 0x7E) || c == '\t' || c == '\n'; }));
}

TEST_F(Scanner, PrintsALinePerGatheredGroup) {
    const Finished done = scan({"Processor", "Memory", "Video", "ScanInfo"}, {"--root", kServer});
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.errors, "");
    EXPECT_NE(done.output.find("group Processor: 8 instances, "), std::string::npos) << done.output;
    EXPECT_NE(done.output.find("group Memory: 1 instance, "), std::string::npos) << done.output;
    EXPECT_EQ(std::ranges::count(done.output, '\n'), 4);
}

TEST_F(Scanner, WritesRequestedGroupsOnly) {
    ASSERT_EQ(scan({"Memory"}, {"--root", kServer}).status, 0);
    EXPECT_EQ(groupsWritten(), (std::multiset<std::string>{"Memory"}));
    ASSERT_EQ(scan({}, {"--root", kServer}).status, 0);
    EXPECT_TRUE(elements().empty());
}

TEST_F(Scanner, AcceptsBothNamesOfAGroupAndGathersItOnce) {
    for (const std::vector<std::string>& names :
         std::vector<std::vector<std::string>>{{"Operating System"},
                                               {"OperatingSystem"},
                                               {"Operating System", "OperatingSystem", "Operating System"}}) {
        const Finished done = scan(names, {"--root", kServer});
        EXPECT_EQ(done.status, 0);
        EXPECT_EQ(done.errors, "");
        EXPECT_EQ(groupsWritten(), (std::multiset<std::string>{"OperatingSystem"}));
    }
}

TEST_F(Scanner, WarnsAboutAnUnknownGroupAndContinues) {
    const Finished done = scan({"Operating  System", "Memory", "ScanInfo"}, {"--root", kServer});
    EXPECT_EQ(done.status, 0);
    EXPECT_NE(done.errors.find("unknown group \"Operating  System\""), std::string::npos) << done.errors;
    EXPECT_EQ(groupsWritten(), (std::multiset<std::string>{"Memory", "ScanInfo"}));
    EXPECT_EQ(elements().back()["Warnings"], "unknown group \"Operating  System\"");
}

TEST_F(Scanner, PrettyOutputHasTheSameContent) {
    ASSERT_EQ(scan({"Processor", "Memory"}, {"--root", kServer}).status, 0);
    std::string plain = readAll(out());
    ASSERT_EQ(scan({"Processor", "Memory"}, {"--root", kServer, "--pretty"}).status, 0);
    std::string pretty = readAll(out());
    EXPECT_NE(plain, pretty);
    for (std::size_t at = pretty.find('\n'); at != std::string::npos; at = pretty.find('\n')) {
        pretty.erase(at, std::max(pretty.find_first_not_of(" \n", at), at + 1) - at);
        if (pretty.size() == at) break;
    }
    EXPECT_EQ(plain, pretty.substr(0, plain.size()));
}

// Without other groups the packages are gathered without a child process.
TEST_F(Scanner, PackagesAreTheSameAloneAndAmongOtherGroups) {
    for (const std::vector<std::string>& options : {std::vector<std::string>(), {"--pretty"}}) {
        const Finished alone = scan({"Software Packages"}, options);
        ASSERT_EQ(alone.status, 0) << alone.errors;
        const std::string text = readAll(out());
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find("<SoftwarePackages>", at)) != std::string::npos; ++at)
            ++count;
        EXPECT_TRUE(
            alone.output.starts_with("group SoftwarePackages: " + std::to_string(count) + " instance"))
            << alone.output;
        ASSERT_EQ(scan({"Software Packages", "Lpar"}, options).status, 0);
        EXPECT_TRUE(text == readAll(out())) << "a group without instances adds nothing";
    }
}

TEST_F(Scanner, WithoutVolatileValuesTwoScansAreTheSame) {
    const std::vector<std::string> groups = {
        "ComponentID",       "Processor",          "Memory",    "Operating System",   "Storage", "Regional",
        "PhysicalProcessor", "UNIX System Params", "Scan Info", "VirtualMachineGuest"};
    ASSERT_EQ(scan(groups, {"--no-volatile"}).status, 0);
    const std::string first = readAll(out());
    ASSERT_EQ(scan(groups, {"--no-volatile"}).status, 0);
    EXPECT_EQ(readAll(out()), first);
    ASSERT_EQ(scan({"Memory"}, {"--no-volatile", "--root", kServer}).status, 0);
    EXPECT_EQ(only()["FreePhysicalMemory"], "");
    EXPECT_EQ(only()["TotalVisibleMemorySize"], "65689512");
}

TEST_F(Scanner, SanitizedOutputIdentifiesNobody) {
    ASSERT_EQ(scan(allDisplayNames(), {"--root", kServer, "--sanitize"}).status, 0);
    const std::string text = readAll(out());
    for (const char* const secret :
         {"4c4c4544", "CZ3402ABCD", "db1.example", "8d3c1e0b", "0b5b6a44", "ZC1ABCDE", "5000c500a1b2c3d4",
          "S437NX0M900001", "1f2e3d4c", "9a8b7c6d", "12345678<", kServer.c_str()}) {
        EXPECT_EQ(text.find(secret), std::string::npos) << secret;
    }
    std::set<std::string> names;
    for (const Element& element : elements()) {
        if (element.group == "ComponentID") names.insert(element["Name"]);
        if (element.group == "OperatingSystem") names.insert(element["CSName"]);
        if (element.group == "UNIXSystemParams") names.insert(element["NodeName"]);
    }
    EXPECT_EQ(names.size(), 1U) << "the same name has the same hash everywhere";
    EXPECT_EQ(names.begin()->size(), 16U);
}

TEST_F(Scanner, SanitizedOutputNamesNoAccountsGuestsOrPrinters) {
    const fs::path tree = dir_.path() / "tree";
    dir_.write("tree/etc/passwd", "secretuser:x:1001:1001:Secret Person:/home/secretuser:/bin/sh\n");
    dir_.write("tree/etc/group", "secretuser:x:1001:\nsecretteam:x:1002:secretuser\n");
    dir_.write("tree/home/secretuser/.xscreensaver", "lock: True\n");
    dir_.write("tree/var/log/wtmp", toolkit::quorvah::loginRecord(toolkit::quorvah::kLoginRecord, "pts/0",
                                                                  "secretuser", "secrethost", 1700000000));
    dir_.write("tree/etc/libvirt/qemu/secretguest.xml",
               "<domain type='kvm'><name>secretguest</name><uuid>secretid</uuid></domain>");
    dir_.write("tree/etc/cups/printers.conf",
               "<Printer laser>\nInfo of secretuser\nLocation secretroom\n"
               "DeviceURI ipp://secrethost/laser\n</Printer>\n");
    dir_.write("tree/proc/self/mountinfo",
               "36 1 0:40 / /home/secretuser rw - nfs4 secrethost:/secretshare rw,username=secretuser\n");
    ASSERT_EQ(scan(allDisplayNames(), {"--root", tree, "--sanitize"}).status, 0);
    const std::multiset<std::string> groups = groupsWritten();
    for (const char* const group : {"UserAccountInfo", "LastLoggedUser", "ScreenSaverInfo", "VirtualMachine",
                                    "Printer", "LogicalDrive"})
        EXPECT_EQ(1U, groups.count(group)) << group;
    EXPECT_EQ(std::string::npos, readAll(out()).find("secret")) << readAll(out());
}

TEST_F(Scanner, RawOutputKeepsPlaceholders) {
    ASSERT_EQ(scan({"ComponentID"}, {"--root", kServer}).status, 0);
    EXPECT_EQ(only()["Version"], "");
    ASSERT_EQ(scan({"ComponentID"}, {"--root", kServer, "--raw"}).status, 0);
    EXPECT_EQ(only()["Version"], "Default string");
}

TEST_F(Scanner, ReadsTheRootFromTheEnvironment) {
    ASSERT_EQ(scan({"ComponentID"}, {}, {"QUORVAH_ROOT=" + kServer}).status, 0);
    EXPECT_EQ(only()["Name"], "db1.example.com");
}

TEST_F(Scanner, TakesOptionsFromTheEnvironment) {
    ASSERT_EQ(
        scan({"ComponentID"}, {}, {"QUORVAH_ROOT=" + kServer, "QUORVAH_SANITIZE=1", "QUORVAH_NO_VOLATILE=1"})
            .status,
        0);
    EXPECT_EQ(only()["Name"].size(), 16U);
    EXPECT_EQ(only()["Name"].find("db1"), std::string::npos);
    EXPECT_EQ(only()["BootId"], "");
    ASSERT_EQ(scan({"ComponentID"}, {}, {"QUORVAH_ROOT=" + kServer, "QUORVAH_PRETTY=1"}).status, 0);
    EXPECT_NE(readAll(out()).find("\n    <Name>db1.example.com</Name>\n"), std::string::npos);
}

// The search for leaks traces the program when it ends, which the kernel forbids for one with other rights.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSearchesLeaks = true;
#else
constexpr bool kSearchesLeaks = false;
#endif
#else
constexpr bool kSearchesLeaks = false;
#endif

// A set-user-ID program runs with the rights of its owner, but with the environment of its caller.
TEST_F(Scanner, IgnoresTheEnvironmentOfACallerWithOtherRights) {
    if (kSearchesLeaks) GTEST_SKIP() << "a program with other rights cannot be searched for leaks";
    if (geteuid() != 0) GTEST_SKIP() << "only root can make a program of another user";
    constexpr uid_t kOther = 65534;
    const fs::path program = dir_.path() / "quorvah";
    fs::copy_file(QUORVAH_PROGRAM, program);
    ASSERT_EQ(::chown(program.c_str(), kOther, kOther), 0);
    ASSERT_EQ(::chmod(program.c_str(), 04755), 0);
    const fs::path open = dir_.path() / "open";
    fs::create_directory(open);
    for (const fs::path& directory : {dir_.path(), open}) fs::permissions(directory, fs::perms::all);
    const std::string written = (open / "out.xml").string();
    const std::vector<std::string> arguments = {"-c", configure({"ComponentID"}), "-o", written};
    const std::vector<std::string> environment = {"QUORVAH_ROOT=" + kServer, "QUORVAH_SANITIZE=1",
                                                  "QUORVAH_PRETTY=1"};
    ASSERT_EQ(zavtest::runProgram(program, arguments, environment).status, 0);
    const std::string text = readAll(written);
    struct stat status {};
    ASSERT_EQ(::stat(written.c_str(), &status), 0);
    ASSERT_EQ(status.st_uid, kOther) << "the test directory does not allow set-user-ID programs";
    EXPECT_EQ(text.find("db1.example.com"), std::string::npos) << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    std::string host(256, '\0');
    ASSERT_EQ(::gethostname(host.data(), host.size()), 0);
    host.resize(host.find('\0'));
    EXPECT_NE(text.find("<Name>" + host + "</Name>"), std::string::npos) << text;
}

TEST_F(Scanner, PrintsHelpAndVersion) {
    const Finished help = runScanner({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.starts_with("Usage: quorvah ")) << help.output;
    EXPECT_EQ(help.errors, "");
    const Finished version = runScanner({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.starts_with("quorvah ")) << version.output;
}

TEST_F(Scanner, RejectsABadCommandLineWith2) {
    const std::string config = configure({"Memory"});
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"-c", config},
                                               {"-c", config, "-o", out(), "--bogus"},
                                               {"-c", config, "-o", out(), "more"}}) {
        const Finished done = runScanner(arguments);
        EXPECT_EQ(done.status, 2);
        EXPECT_TRUE(done.errors.starts_with("quorvah: ")) << done.errors;
        EXPECT_EQ(done.output, "");
    }
    EXPECT_FALSE(fs::exists(out()));
}

TEST_F(Scanner, RejectsARootThatIsNotADirectoryWith2) {
    for (const std::string& tree : {std::string("/no/such/tree"), configure({})}) {
        const Finished done = scan({"Memory"}, {"--root", tree});
        EXPECT_EQ(done.status, 2);
        EXPECT_NE(done.errors.find(tree), std::string::npos) << done.errors;
    }
    EXPECT_FALSE(fs::exists(out()));
}

TEST_F(Scanner, RejectsABadConfigurationWith2NamingFileAndLine) {
    const std::string config = dir_.write("bad.xml", "<QEL>\n<ZAV>\n</QEL>\n").string();
    const Finished malformed = runScanner({"-c", config, "-o", out()});
    EXPECT_EQ(malformed.status, 2);
    EXPECT_NE(malformed.errors.find(config + ":3: "), std::string::npos) << malformed.errors;
    const std::string missing = (dir_.path() / "missing.xml").string();
    const Finished unreadable = runScanner({"-c", missing, "-o", out()});
    EXPECT_EQ(unreadable.status, 2);
    EXPECT_NE(unreadable.errors.find(missing), std::string::npos) << unreadable.errors;
    EXPECT_FALSE(fs::exists(out()));
}

// The C library loads modules for these encodings, which must work however the scanner is linked.
TEST_F(Scanner, ReadsAConfigurationInAnyEncodingThatTheSystemKnows) {
    const std::pair<std::string, std::string> cases[] = {
        {"ISO-8859-15", "\xA4"}, {"Windows-1252", "\x80"}, {"EUC-KR", "\xA2\xE6"}};
    for (const auto& [encoding, euro] : cases) {
        const std::string text = "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><QEL><Group Name=\"" +
                                 euro + "\"/><Group Name=\"Memory\"/></QEL>";
        const Finished done = runScanner({"-c", dir_.write("config.xml", text).string(), "-o", out()});
        EXPECT_EQ(done.status, 0) << encoding;
        EXPECT_EQ(done.errors, "quorvah: unknown group \"\xE2\x82\xAC\"\n");
        EXPECT_EQ(groupsWritten(), (std::multiset<std::string>{"Memory"}));
    }
    const std::string config =
        dir_.write("config.xml", "<?xml version='1.0' encoding='x-none'?><QEL/>").string();
    const Finished unknown = runScanner({"-c", config, "-o", out()});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.errors.find(config + ":1: "), std::string::npos) << unknown.errors;
}

TEST_F(Scanner, ExitsWith1WhenTheOutputCannotBeWritten) {
    const std::string config = configure({"Memory"});
    const std::string target = (dir_.path() / "missing" / "out.xml").string();
    const Finished done = runScanner({"-c", config, "-o", target});
    EXPECT_EQ(done.status, 1);
    EXPECT_NE(done.errors.find(target), std::string::npos) << done.errors;
    EXPECT_FALSE(fs::exists(dir_.path() / "missing"));
    EXPECT_EQ(runScanner({"-c", config, "-o", "/dev/full"}).status, 1);
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(Scanner, WritesTheOutputIfNobodyReadsItsProgress) {
    const std::string config = configure({"Memory"});
    const std::string command =
        std::string("'") + QUORVAH_PROGRAM + "' -c '" + config + "' -o '" + out() + "' | true";
    ASSERT_EQ(std::system(command.c_str()), 0);
    for (int tries = 0; tries < 500 && !fs::exists(out()); ++tries) usleep(10000);
    EXPECT_EQ(groupsWritten(), (std::multiset<std::string>{"Memory"}));
}

TEST_F(Scanner, WritesOnlyTheOutputWithoutStandardStreams) {
    const std::string command = std::string("'") + QUORVAH_PROGRAM + "' -c '" +
                                configure({"Memory", "No such group"}) + "' -o '" + out() + "' <&- >&- 2>&-";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(groupsWritten(), (std::multiset<std::string>{"Memory"}));
}

TEST_F(Scanner, KeepsTheOldOutputOrWritesTheNewOneWhenKilled) {
    const std::string config = configure(allDisplayNames());
    for (int delay = 0; delay < 20; ++delay) {
        dir_.write("out.xml", "old");
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(STDOUT_FILENO);
            execl(QUORVAH_PROGRAM, "quorvah", "-c", config.c_str(), "-o", out().c_str(),
                  static_cast<char*>(nullptr));
            _exit(98);
        }
        usleep(static_cast<useconds_t>(delay) * 3000);
        kill(child, SIGTERM);
        int status = 0;
        waitpid(child, &status, 0);
        const std::string text = readAll(out());
        EXPECT_TRUE(text == "old" || text.ends_with("</Hardware>")) << text.substr(0, 100);
        EXPECT_EQ(std::distance(fs::directory_iterator(dir_.path()), {}), 2) << "no other file is left";
    }
}
