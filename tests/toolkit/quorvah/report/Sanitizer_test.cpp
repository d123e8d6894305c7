#include "toolkit/quorvah/report/Sanitizer.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

constexpr schema::Field kFields[] = {
    {"DeviceID"},
    {.name = "Serial", .privacy = schema::Privacy::Serial},
    {.name = "Clock", .isVolatile = true},
    {.name = "Address", .isVolatile = true, .privacy = schema::Privacy::Address}};
constexpr Group kGroup{"Thing", "Thing", kFields, nullptr};

GroupData someReport() {
    GroupData data(kGroup);
    Instance& first = data.add("a");
    first.set("Serial", "S1;S2;S1");
    first.set("Clock", 5);
    first.set("Address", "S2");
    data.add("b");
    return data;
}

TEST(SipHash, MatchesThePublishedResults) {
    const std::array<std::uint64_t, 2> key = {0x0706050403020100, 0x0f0e0d0c0b0a0908};
    std::string text;
    for (char c = 0; c < 15; ++c) text += c;
    EXPECT_EQ(sipHash(key, text), 0xa129ca6149be45e5U);
    EXPECT_EQ(sipHash(key, ""), 0x726fdb47dd0e0e31U);
    EXPECT_EQ(sipHash(key, text.substr(0, 8)), 0x93f5f5799a932462U);
}

TEST(Sanitizer, HashesEqualValuesEquallyAndOthersDifferently) {
    GroupData data = someReport();
    const Sanitizer sanitizer;
    sanitizer.hide(data);
    const Instance& first = data.instances().front();
    const std::string serials = first.get("Serial");
    ASSERT_EQ(serials.size(), 3U * 16 + 2) << serials;
    EXPECT_EQ(serials.substr(0, 16), serials.substr(34, 16));
    EXPECT_NE(serials.substr(0, 16), serials.substr(17, 16));
    EXPECT_EQ(serials.substr(17, 16), first.get("Address"));
    EXPECT_EQ(serials.find('S'), std::string::npos);
}

TEST(Sanitizer, DoesNotChangeOtherFieldsOrUnknownValues) {
    GroupData data = someReport();
    Sanitizer().hide(data);
    EXPECT_EQ(data.instances()[0].get("DeviceID"), "a");
    EXPECT_EQ(data.instances()[0].get("Clock"), "5");
    EXPECT_EQ(data.instances()[1].get("Serial"), "");
}

TEST(Sanitizer, HashesOnlyTheNamesInPathsThatNotMostSystemsHave) {
    const Sanitizer sanitizer;
    const std::string alice = sanitizer.hashed("alice");
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"/", "/"},
        {"/var/log", "/var/log"},
        {"/home/alice", "/home/" + alice},
        {"/home/alice/", "/home/" + alice + "/"},
        {"alice", alice},
        {"/dev/sda1", "/dev/sda1"},
        {"/dev/mapper/alice", "/dev/mapper/" + alice},
        {"/dev/alice/alice", "/dev/" + alice + "/" + alice},
        {"alice:/home", sanitizer.hashed("alice:") + "/home"},
        {"/mnt;/home/alice;;/dev/vda", "/mnt;/home/" + alice + ";;/dev/vda"},
    };
    for (const auto& [path, expected] : cases) EXPECT_EQ(expected, sanitizer.hashedPaths(path)) << path;
}

TEST(Sanitizer, HidesAFieldByItsClass) {
    constexpr static schema::Field kPlaces[] = {{.name = "Root", .privacy = schema::Privacy::Path},
                                                {.name = "Options", .privacy = schema::Privacy::Content}};
    constexpr static Group kPlace{"Place", "Place", kPlaces, nullptr};
    GroupData data(kPlace);
    data.add("/home/alice").set("Options", "/home");
    const Sanitizer sanitizer;
    sanitizer.hide(data);
    EXPECT_EQ(data.instances().front().get("Root"), "/home/" + sanitizer.hashed("alice"));
    EXPECT_EQ(data.instances().front().get("Options"), sanitizer.hashed("/home"));
}

TEST(Sanitizer, UsesAnotherKeyEachTime) {
    EXPECT_NE(Sanitizer().hashed("S1"), Sanitizer().hashed("S1"));
}

TEST(Sanitizer, KeepsTheSeparatorsOfEmptyValues) {
    const Sanitizer sanitizer;
    EXPECT_EQ(sanitizer.hashed(""), "");
    EXPECT_EQ(sanitizer.hashed(";x"), ";" + sanitizer.hashed("x"));
}

TEST(Volatile, FieldsAreEmptiedAndOthersKept) {
    GroupData data = someReport();
    dropVolatile(data);
    const auto values = data.instances()[0].values();
    EXPECT_EQ(std::vector<std::string>(values.begin(), values.end()),
              (std::vector<std::string>{"a", "S1;S2;S1", "", ""}));
}

}  // namespace
}  // namespace toolkit::quorvah
