// The objects of zav.hpp, with scanners that write what the test chooses.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "include/zav.hpp"
#include "tests/hw/Toolkit.h"
#include "tests/support/NothingLeft.h"
#include "tests/sw/Toolkit.h"

#ifdef __cpp_lib_ranges
#include <ranges>
#endif

namespace {

using Strings = std::vector<std::string>;

constexpr const char* kTwoDisks =
    "<Hardware><Storage><DeviceID>/dev/sda</DeviceID><Model>Größe \xF0\x9F\x98\x80</Model></Storage>"
    "<Storage><DeviceID>/dev/sdb</DeviceID><Model></Model></Storage></Hardware>";

// A toolkit with both scanners, and a library's temporary directory in which nothing may be left.
class HppTest : public testing::Test, private zavtest::NothingLeft {
  protected:
    HppTest() { std::filesystem::create_directory(temp_); }
    ~HppTest() override { EXPECT_TRUE(std::filesystem::is_empty(temp_)); }

    zav::Options options(const std::filesystem::path& toolkit, zav::Log log = {}) const {
        return {toolkit.string(), temp_.string(), std::move(log)};
    }
    zav::Library hardwareLibrary(zav::Log log = {}) const {
        return zav::Library("tests", options(hardware_.path(), std::move(log)));
    }
    zav::Library softwareLibrary() const { return zav::Library("tests", options(software_.path())); }

    zavtest::ScratchDir scratch_;
    std::filesystem::path temp_ = scratch_.path() / "temp \xC3\xA9";
    hwtest::Toolkit hardware_;
    swtest::Toolkit software_;
};

template <class Call>
int codeOf(Call&& call) {
    try {
        call();
    } catch (const zav::Error& error) {
        EXPECT_STREQ(error.what(), ZAV_code_text(error.code()));
        return error.code();
    }
    return ZAV_SUCCESS;
}

TEST_F(HppTest, RangesLeadFromGroupsToValues) {
    hardware_.scannerWrites(kTwoDisks);
    const zav::Library library = hardwareLibrary();
    const zav::Hardware hardware = library.hardware({ZAV_HW_STORAGE, "Processor"});
    std::ostringstream seen;
    for (const zav::Group& group : hardware.groups()) {
        seen << group.id() << ' ' << group.name() << '\n';
        for (const zav::Instance instance : group.instances()) {
            for (const zav::Field field : instance.fields()) seen << field.name << '=' << field.value << '\n';
        }
    }
    EXPECT_EQ(seen.str(),
              "2 Processor\n5 Storage\nDeviceID=/dev/sda\nModel=Größe "
              "\xF0\x9F\x98\x80\nDeviceID=/dev/sdb\nModel=\n");
    EXPECT_EQ(hardware.return_code(), 0);
}

TEST_F(HppTest, ValuesAreFoundByNarrowAndWideNames) {
    hardware_.scannerWrites(kTwoDisks);
    const zav::Hardware hardware = hardwareLibrary().hardware({"Storage"});
    const zav::Instances disks = hardware.instances(ZAV_HW_STORAGE);
    ASSERT_EQ(disks.size(), 2U);
    EXPECT_EQ(disks[1]["DeviceID"].utf8(), "/dev/sdb");
    EXPECT_EQ(disks[1][L"DeviceID"], L"/dev/sdb");
    EXPECT_TRUE(disks[1].value(std::string("Model")).empty());
    EXPECT_EQ(disks[0]["Model"].utf8(), "Größe \xF0\x9F\x98\x80");
}

TEST_F(HppTest, RangesWorkWithAlgorithms) {
    hardware_.scannerWrites(kTwoDisks);
    const zav::Hardware hardware = hardwareLibrary().hardware({"Storage"});
    const zav::Instances disks = hardware.instances("Storage");
    const auto found = std::find_if(disks.begin(), disks.end(),
                                    [](zav::Instance disk) { return disk["DeviceID"] == L"/dev/sdb"; });
    EXPECT_EQ(found - disks.begin(), 1);
    EXPECT_EQ(disks.end()[-1]["DeviceID"], L"/dev/sdb");
#ifdef __cpp_lib_ranges
    EXPECT_EQ(std::ranges::count_if(hardware.instances("Storage"),
                                    [](zav::Instance disk) { return disk["Model"].empty(); }),
              1);
#endif
// clang 14 and 15 cannot compile the views of libstdc++.
#if defined(__cpp_lib_ranges) && !(defined(__clang_major__) && __clang_major__ < 16)
    Strings names;
    for (const std::string& name :
         hardware.instances("Storage") | std::views::reverse |
             std::views::transform([](zav::Instance disk) { return disk["DeviceID"].utf8(); }))
        names.push_back(name);
    EXPECT_EQ(names, (Strings{"/dev/sdb", "/dev/sda"}));
#endif
}

TEST_F(HppTest, ErrorsHaveCodeAndSentence) {
    hardware_.scannerWrites(kTwoDisks);
    zav::Library library = hardwareLibrary();
    const zav::Hardware hardware = library.hardware({"Storage"});
    EXPECT_EQ(codeOf([&] { (void)library.hardware({"Disks"}); }), ZAV_ERROR_HW_GROUP);
    EXPECT_EQ(codeOf([&] { (void)library.hardware({""}); }), ZAV_ERROR_HW_GROUP);
    EXPECT_EQ(codeOf([&] { (void)hardware.instances("Memory"); }), ZAV_ERROR_HW_GROUP_DISABLED);
    EXPECT_EQ(codeOf([&] { (void)hardware.instances("Storage")[0]["Colour"]; }), ZAV_ERROR_HW_FIELD);
    EXPECT_EQ(codeOf([&] { (void)hardware.instances("Storage").get(2)["Model"]; }), ZAV_ERROR_HW_INSTANCE);
    hardware_.remove("output.xml");
    EXPECT_EQ(codeOf([&] { (void)library.hardware({"Storage"}); }), ZAV_ERROR_HW_OUTPUT);
    hardware_.remove("quorvah");
    EXPECT_EQ(codeOf([&] { (void)library.hardware({"Storage"}); }), ZAV_ERROR_HW_SCANNER);
    EXPECT_EQ(codeOf([&] { zav::Library("tests", {"", "/nowhere", {}}); }), ZAV_ERROR_WORKSPACE);
}

TEST_F(HppTest, TwinsReturnTheCodeInsteadOfThrowing) {
    const zav::Expected<zav::Library> none = zav::Library::open("tests", {"", "/nowhere", {}});
    EXPECT_FALSE(none);
    EXPECT_EQ(none.code(), ZAV_ERROR_WORKSPACE);
    EXPECT_STREQ(none.text(), ZAV_code_text(ZAV_ERROR_WORKSPACE));
    hardware_.scannerWrites(kTwoDisks);
    const zav::Expected<zav::Library> library = zav::Library::open("tests", options(hardware_.path()));
    ASSERT_TRUE(library);
    const zav::Expected<zav::Hardware> hardware = library->try_hardware({"Storage"});
    ASSERT_TRUE(hardware) << hardware.text();
    const zav::Instance disk = hardware->try_instances("Storage")->front();
    EXPECT_EQ(disk.try_value("Model").code(), ZAV_SUCCESS);
    EXPECT_EQ(disk.try_value("Colour").code(), ZAV_ERROR_HW_FIELD);
    EXPECT_EQ(disk.try_value("Colour").value_or(zav::Text(L"red")), L"red");
    EXPECT_EQ(disk.try_fields()->size(), 2U);
}

TEST_F(HppTest, ResultsOutliveTheLibraryObject) {
    hardware_.scannerWrites(kTwoDisks);
    zav::Hardware kept = hardwareLibrary().hardware({"Storage"});
    zav::Hardware moved = std::move(kept);
    EXPECT_EQ(moved.instances("Storage").size(), 2U);
    EXPECT_EQ(codeOf([&] { kept.scan(); }),
              ZAV_ERROR_CONTEXT);  // NOLINT(bugprone-use-after-move): what is tested
    // The replaced inventory and its library are released in this order.
    moved = hardwareLibrary().hardware({"Processor"});
    EXPECT_TRUE(moved.instances("Processor").empty());
}

TEST_F(HppTest, LibraryMayBeMovedWhileItsInventoriesLive) {
    hardware_.scannerWrites(kTwoDisks);
    int messages = 0;
    zav::Library library = hardwareLibrary([&messages](const zav::Message&) { ++messages; });
    zav::Hardware hardware = library.new_hardware();
    const zav::Library moved = std::move(library);
    EXPECT_EQ(codeOf([&] { (void)library.new_hardware(); }),
              ZAV_ERROR_CONTEXT);  // NOLINT(bugprone-use-after-move)
    hardware.enable("Storage");
    const int before = std::exchange(messages, 0);
    hardware.scan();
    EXPECT_GT(before, 0);
    EXPECT_GT(messages, 0);
}

TEST_F(HppTest, MessagesSayWhereTheyComeFrom) {
    std::vector<int> components;
    std::string why;
    {
        const zav::Library library = hardwareLibrary([&](const zav::Message& message) {
            if (std::count(components.begin(), components.end(), message.component) == 0)
                components.push_back(message.component);
            if (message.level == 0 && message.component == 3) why += message.text;
        });
        EXPECT_EQ(library.try_hardware({"Storage"}).code(), ZAV_ERROR_HW_SCANNER);
    }
    EXPECT_EQ(components, (std::vector<int>{1, 3}));
    EXPECT_NE(why.find("ENOENT"), std::string::npos) << why;
}

TEST_F(HppTest, ThrowingLogFailsTheCallOnly) {
    hardware_.scannerWrites(kTwoDisks);
    bool throws = false;
    const zav::Library library = hardwareLibrary([&throws](const zav::Message&) {
        if (throws) throw std::runtime_error("log");
    });
    zav::Hardware hardware = library.hardware({"Storage"});
    throws = true;
    EXPECT_EQ(codeOf([&] { hardware.scan(); }), ZAV_ERROR_MEMORY);
    throws = false;
    hardware.scan();
    EXPECT_EQ(hardware.instances("Storage").size(), 2U);
}

TEST_F(HppTest, GroupsAreDisabledAgain) {
    hardware_.scannerWrites(kTwoDisks);
    zav::Hardware hardware = hardwareLibrary().new_hardware();
    EXPECT_TRUE(hardware.groups().empty());
    hardware.enable(ZAV_HW_ALL);
    hardware.scan();
    EXPECT_EQ(hardware.groups().size(), 48U);
    hardware.enable(ZAV_HW_ALL, false);
    hardware.enable("Storage");
    EXPECT_TRUE(hardware.groups().empty());
    EXPECT_EQ(hardware.return_code(), -1);
    hardware.scan();
    EXPECT_EQ(hardware.groups().size(), 1U);
}

constexpr const char* kTwoMatches =
    "<QEL><MatchedSignature guid='a'><Variable name='version' value='1.\xC3\xBC'/><Variable name='path' "
    "value='/bin/a'/>"
    "<Metadata><Maker>\xF0\x9F\x98\x80</Maker></Metadata></MatchedSignature><MatchedSignature "
    "guid='b'/></QEL>";

TEST_F(HppTest, SoftwareResultsAreARange) {
    software_.scannerWrites(kTwoMatches);
    const zav::Library library = softwareLibrary();
    const zav::Software software =
        library.software({"<Signature guid='a'/>", "<Signature guid='\xC3\xBC'/>"});
    std::ostringstream seen;
    for (const zav::Result result : software.results()) {
        seen << result.guid();
        for (const zav::Variable variable : result.variables())
            seen << ' ' << variable.name << '=' << variable.value;
        seen << '\n';
    }
    EXPECT_EQ(seen.str(), "a path=/bin/a version=1.\xC3\xBC\nb\n");
    EXPECT_NE(software.results()[0].metadata().utf8().find("\xF0\x9F\x98\x80"), std::string::npos);
    EXPECT_TRUE(software.results()[1].metadata().empty());
    EXPECT_EQ(software.find("a").size(), 1U);
    EXPECT_EQ(software.find("a")[0]["version"].utf8(), "1.\xC3\xBC");
    EXPECT_TRUE(software.find("c").empty());
    EXPECT_EQ(codeOf([&] { (void)software.results()[1]["version"]; }), ZAV_ERROR_SW_VARIABLE);
    EXPECT_NE(software_.read("seen_signatures").find("guid='\xC3\xBC'"), std::string::npos);
}

TEST_F(HppTest, VariablesAndSettingsAreEscaped) {
    software_.scannerWrites(kTwoMatches);
    zav::Software software = softwareLibrary().new_software();
    software.set_variable("a", "minimum", "<\"2\" & \xC3\xBC>\n");
    software.add_setting("Secrets", "allow", "/root");
    software.evaluate("<Signature guid='a'/>");
    const std::string configuration = software_.read("seen_configuration");
    EXPECT_NE(configuration.find("&lt;&quot;2&quot; &amp; \xC3\xBC&gt;&#10;"), std::string::npos)
        << configuration;
    EXPECT_NE(configuration.find("/root"), std::string::npos) << configuration;
}

TEST_F(HppTest, WarningsAreTextInUtf8) {
    software_.scannerWrites(kTwoMatches, "<Events><Event><Name>\xC3\xBC</Name></Event></Events>");
    const zav::Software software =
        softwareLibrary().software(std::vector<std::string>{"<Signature guid='a'/>"});
    ASSERT_EQ(software.warnings().size(), 1U);
    EXPECT_NE(software.warnings()[0].utf8().find("\xC3\xBC"), std::string::npos);
}

TEST_F(HppTest, RefusedSignatureIsAnError) {
    software_.scannerWrites(kTwoMatches);
    software_.put("status", "3");
    const zav::Library library = softwareLibrary();
    EXPECT_EQ(codeOf([&] { (void)library.software("<Signature"); }), ZAV_ERROR_SW_SIGNATURE);
    EXPECT_EQ(codeOf([&] { (void)library.software_file("/none"); }), ZAV_ERROR_SW_SIGNATURE);
    const zav::Software fresh = library.new_software();
    EXPECT_EQ(codeOf([&] { (void)fresh.results(); }), ZAV_ERROR_SW_NO_RESULTS);
    EXPECT_EQ(fresh.return_code(), -1);
}

TEST(HppText, WhatIsNoCharacterBecomesTheReplacementCharacter) {
    const wchar_t text[] = {
        L'a', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000), wchar_t(-1), L'\x7FF', 0};
    EXPECT_EQ(zav::Text(text).utf8(), "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xDF\xBF");
    const wchar_t bytes[] = {wchar_t(-61), wchar_t(-68), 0};
    EXPECT_EQ(zav::ByteText(bytes).utf8(), "\xC3\xBC");
}

#ifdef ZAV_TOOLKIT_DIRECTORY
TEST(HppScan, BundledScannersAreRead) {
    const zav::Library library("tests", {ZAV_TOOLKIT_DIRECTORY, "", {}});
    const zav::Hardware hardware = library.hardware({"Processor", "ScanInfo"});
    EXPECT_FALSE(hardware.instances("Processor").empty());
    EXPECT_EQ(hardware.instances("ScanInfo")[0]["ScannerName"].utf8(), "quorvah");
    const zav::Software software = library.software(
        "<Signature guid='env' name='Environments \xC3\xBC'><Match><File id='f' "
        "path='/usr/bin/env'/></Match>"
        "<Output><Variable name='text' value='\xC3\xBC\xF0\x9F\x98\x80'/></Output></Signature>");
    ASSERT_EQ(software.results().size(), 1U);
    EXPECT_EQ(software.results().front()["text"].utf8(), "\xC3\xBC\xF0\x9F\x98\x80");
    EXPECT_NE(software.results().front().metadata().utf8().find("Environments \xC3\xBC"), std::string::npos);
}
#endif

}  // namespace
