#include "cli/capture/Pseudonyms.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

HardwareInventory machine() {
    return {{},
            {{1,
              "ComponentID",
              {{{"Name", "buildhost"},
                {"SerialNumber", "AB-123456"},
                {"UUID", "4c4c4544-0043-4810-8033-b3c04f4a5731"},
                {"Family", "ServerFamily"}}}},
             {36,
              "UserAccountInfo",
              {{{"UserID", "0"}, {"Name", "root"}, {"SystemAccount", "true"}},
               {{"UserID", "2"}, {"Name", "daemon"}, {"SystemAccount", "true"}},
               {{"UserID", "1000"}, {"Name", "anna"}, {"SystemAccount", "false"}}}},
             {7, "NetworkAdapter", {{{"DeviceID", "eth0"}, {"PermanentAddress", "52:54:00:ab:cd:ef"}}}}}};
}

RecordedFile file(const std::string& content) {
    return {RecordedFile::Kind::File, 0644, 1000, 1000, 0, content};
}

TEST(Pseudonyms, PrivateValuesAreReplacedByOnesOfTheSameForm) {
    const Pseudonyms pseudonyms(machine());
    const std::string text = pseudonyms.replaced("AB-123456\n");
    EXPECT_EQ(std::string::npos, text.find("123456"));
    ASSERT_EQ(10U, text.size());
    EXPECT_TRUE(std::isupper(text[0]) && std::isupper(text[1]) && text[2] == '-' && std::isdigit(text[3]))
        << text;
    EXPECT_EQ(text, pseudonyms.replaced("AB-123456\n"));
    const std::string address = pseudonyms.replaced("52:54:00:ab:cd:ef");
    EXPECT_EQ(17U, address.size());
    EXPECT_EQ(std::string::npos, address.find_first_not_of("0123456789abcdef:")) << address;
    EXPECT_NE("52:54:00:ab:cd:ef", address);
}

TEST(Pseudonyms, CaseDoesNotMatter) {
    const Pseudonyms pseudonyms(machine());
    EXPECT_EQ(std::string::npos, pseudonyms.replaced("52:54:00:AB:CD:EF").find("AB:CD:EF"));
    EXPECT_EQ(std::string::npos, pseudonyms.replaced("BUILDHOST").find("BUILDHOST"));
}

TEST(Pseudonyms, PublicValuesAndNamesOfTheSystemStay) {
    const Pseudonyms pseudonyms(machine());
    const std::string text = "ServerFamily root=/dev/sda1 /root daemon eth0 /usr/sbin";
    EXPECT_EQ(text, pseudonyms.replaced(text));
}

TEST(Pseudonyms, ShortNamesAreReplacedAsWholeWordsOnly) {
    const Pseudonyms pseudonyms(machine());
    EXPECT_EQ("savannah annals", pseudonyms.replaced("savannah annals"));
    EXPECT_EQ(std::string::npos, pseudonyms.replaced("/home/anna/x").find("anna"));
    EXPECT_EQ(std::string::npos, pseudonyms.replaced("xbuildhosty").find("buildhost"));
}

TEST(Pseudonyms, GroupsOfTheSystemStay) {
    HardwareInventory inventory = machine();
    inventory.groups[1].instances[2].push_back({"Groups", "sudo;secretteam"});
    const Pseudonyms pseudonyms(inventory, "broken\n\nsudo:x:27:anna\nsecretteam:x:1001:anna\n");
    EXPECT_EQ("sudo", pseudonyms.replaced("sudo"));
    EXPECT_NE("secretteam", pseudonyms.replaced("secretteam"));
}

TEST(Pseudonyms, TheBytesOfAUuidAreReplaced) {
    const std::string stored("\x44\x45\x4c\x4c\x43\x00\x10\x48\x80\x33\xb3\xc0\x4f\x4a\x57\x31", 16);
    const std::string straight("\x4c\x4c\x45\x44\x00\x43\x48\x10\x80\x33\xb3\xc0\x4f\x4a\x57\x31", 16);
    const Pseudonyms pseudonyms(machine());
    for (const std::string& bytes : {stored, straight}) {
        const std::string hidden = pseudonyms.replaced("x" + bytes + "y");
        EXPECT_EQ(18U, hidden.size());
        EXPECT_EQ(std::string::npos, hidden.find(bytes));
    }
}

TEST(Pseudonyms, PathsAndLinksAreReplacedAlike) {
    RecordedFiles files;
    files["home/anna/.xscreensaver"] = file("anna");
    files["run/home"] = {RecordedFile::Kind::Link, 0777, 0, 0, 0, "/home/anna"};
    const RecordedFiles hidden = Pseudonyms(machine()).replaced(files);
    ASSERT_EQ(2U, hidden.size());
    const std::string path = hidden.begin()->first;
    EXPECT_EQ(0U, path.find("home/"));
    EXPECT_EQ(std::string::npos, path.find("anna"));
    EXPECT_EQ("/" + path.substr(0, 9), hidden.at("run/home").content);
    EXPECT_EQ(path.substr(5, 4), hidden.begin()->second.content);
    EXPECT_EQ(0U, hidden.begin()->second.user);
}

TEST(Pseudonyms, FilesWithMorePrivateValuesAreEmptied) {
    RecordedFiles files;
    for (const char* const path : {"var/log/wtmp", "proc/self/net/fib_trie", "home/x/.config/dconf/user"})
        files[path] = file("10.1.2.3 someone");
    for (const auto& [path, hidden] : Pseudonyms(machine()).replaced(files))
        EXPECT_EQ("", hidden.content) << path;
}

TEST(Pseudonyms, TheSerialNumberOfAMonitorIsRemovedAndItsSumIsRight) {
    std::string edid(128, '\x01');
    RecordedFiles files;
    files["sys/class/drm/card0-DP-1/edid"] = file(edid);
    const std::string hidden = Pseudonyms(machine()).replaced(files).begin()->second.content;
    EXPECT_EQ(std::string(4, '\0'), hidden.substr(12, 4));
    unsigned sum = 0;
    for (const char c : hidden) sum += static_cast<unsigned char>(c);
    EXPECT_EQ(0U, sum % 256);
}

TEST(Pseudonyms, EveryKeyIsAnother) {
    EXPECT_NE(Pseudonyms(machine()).replaced("AB-123456"), Pseudonyms(machine()).replaced("AB-123456"));
}

}  // namespace
}  // namespace zavcli
