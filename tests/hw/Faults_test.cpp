// Each system call of a scan fails once: the scan returns its documented code, nothing is left behind, and the next
// scan succeeds.
#include <cerrno>
#include <functional>
#include <iostream>

#include "tests/hw/Inventory.h"
#include "tests/support/FaultCase.h"
#include "tests/support/Faults.h"
#include "tests/support/NothingLeft.h"

namespace hwtest {
namespace {

using zavtest::Fault;
using zavtest::FaultCase;
using zavtest::onAnything;

using zavtest::Codes;

bool isConfiguration(const std::string& path) {
    return path.find("/config") != std::string::npos;
}

// A message that cannot be formatted is dropped; a configuration that cannot be written is an error.
FaultCase onConfiguration(const char* function, int error, int code) {
    return {function, error,
            [code](const std::string& path) { return Codes{isConfiguration(path) ? code : 0}; }};
}

class ScanFaultTest : public testing::TestWithParam<FaultCase> {};

TEST_P(ScanFaultTest, ReturnsItsCodeAndTheNextRunSucceeds) {
    const zavtest::NothingLeft nothingLeft;
    int failures = 0;
    for (int nth = 1;; ++nth) {
        Inventory inventory;
        inventory.put("lines", "one\ntwo\n");
        inventory.put("output.xml", "<QEL><Memory><Size>1</Size></Memory></QEL>");
        inventory.scannerIs("PrintLines");
        {
            const Fault fault(GetParam().function, GetParam().error, nth);
            const int code = inventory.run();
            if (fault.failures() == 0) break;
            EXPECT_TRUE(GetParam().codes(fault.path()).contains(code))
                << "call " << nth << ", " << fault.path() << ": " << code;
        }
        ++failures;
        EXPECT_EQ(inventory.run(), 0) << nth;
        EXPECT_EQ(inventory.value(3, 0, L"Size"), L"1") << nth;
    }
    EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(
    SystemCall, ScanFaultTest,
    testing::ValuesIn(zavtest::withCommonFaults(
        ZAV_ERROR_HW_SCANNER,
        {onConfiguration("fopen", EMFILE, 102), onConfiguration("fopen", EACCES, 102),
         onConfiguration("fopen", ENOMEM, 5), onConfiguration("fclose", ENOSPC, 102),
         onAnything("fwrite", ENOSPC, 102), onAnything("open", EACCES, 104), onAnything("open", EMFILE, 104),
         // A scanner whose output is no longer read may end with an error.
         FaultCase{"read", EIO,
                   [](const std::string& kind) {
                       return kind == "pipe" ? Codes{0, 103} : Codes{104};
                   }}})),
    [](const auto& test) { return test.param.function + std::to_string(test.param.error); });

using HWFaultTest = InventoryTest;

TEST_F(HWFaultTest, AFailedWriteIsTheLastOne) {
    for (int nth = 1;; ++nth) {
        const Fault fault("fwrite", ENOSPC, nth);
        takeMessages();
        const int code = run();
        if (fault.failures() == 0) break;
        EXPECT_EQ(code, 102) << nth;
        EXPECT_EQ(fault.callsBehind(), 0) << nth;
        const Messages messages = takeMessages();
        ASSERT_GE(messages.size(), 3U);
        EXPECT_EQ(
            messages[messages.size() - 3],
            (zavtest::Message{0, 3, "generateHWConfigFile()", "Error during write [" + fault.path() + "]"}));
        EXPECT_EQ(
            messages[messages.size() - 2],
            (zavtest::Message{0, 3, "ZAV_hw_run",
                              "Cannot write [" + fault.path() + "]: ENOSPC (no space left on device)"}));
        EXPECT_EQ(messages.back(), (zavtest::Message{0, 3, "ZAV_hw_run", "Config file creation error"}));
        EXPECT_EQ(returnCode(), -1);
    }
}

TEST_F(HWFaultTest, AConfigurationThatCannotBeCreatedIsReportedWithTheReason) {
    for (int nth = 1;; ++nth) {
        const Fault fault("fopen", EACCES, nth);
        takeMessages();
        const int code = run();
        ASSERT_EQ(fault.failures(), 1) << "the configuration was never opened";
        if (!isConfiguration(fault.path())) continue;
        EXPECT_EQ(code, 102);
        EXPECT_EQ(returnCode(), -1);
        const Messages messages = takeMessages();
        ASSERT_EQ(messages.size(), 4U);
        EXPECT_EQ(messages[2],
                  (zavtest::Message{0, 3, "ZAV_hw_run",
                                    "Cannot make [" + fault.path() + "]: EACCES (permission denied)"}));
        EXPECT_EQ(messages.back(), (zavtest::Message{0, 3, "ZAV_hw_run", "Config file creation error"}));
        break;
    }
}

TEST_F(HWFaultTest, WithoutAFreeNameThereIsNoConfiguration) {
    const Fault fault("access", EEXIST, Fault::kEvery);
    EXPECT_EQ(run(), 102);
    const Messages messages = takeMessages();
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_TRUE(messages[1].text.starts_with("No name is free in [" + temp().string())) << messages[1];
    EXPECT_EQ((Messages{messages[0], messages[2]}),
              (Messages{{2, 3, "ZAV_hw_run", "Generating config file: []"},
                        {0, 3, "ZAV_hw_run", "Config file creation error"}}));
    EXPECT_GE(fault.failures(), 30);
    EXPECT_LE(fault.failures(), 59);
}

TEST_F(HWFaultTest, WithoutTheNullDeviceOnlyMessagesAreLost) {
    scannerWrites("<QEL><Memory/></QEL>");
    ASSERT_EQ(run(), 0);
    takeMessages();
    const Fault fault("fopen", ENFILE, Fault::kEvery);
    EXPECT_EQ(instances(3), 1);
    EXPECT_EQ(takeMessages(), Messages());
    EXPECT_EQ(fault.path(), "/dev/null");
}

TEST_F(HWFaultTest, ADirectoryThatCannotBeRemovedIsKeptAndTheFailureIsLogged) {
    ZAVHwCtx* other = nullptr;
    zavtest::LogRecorder log;
    ASSERT_EQ(ZAV_hw_init(handle(), zavtest::LogRecorder::callback, &log, &other), 0);
    {
        const Fault fault("rmdir", EBUSY, 1);
        EXPECT_EQ(ZAV_hw_free(other), 0);
        ASSERT_EQ(fault.failures(), 1);
        const Messages last(log.messages.end() - 3, log.messages.end());
        EXPECT_EQ(last, (Messages{
                            {2, 3, "TemporaryDir::~TemporaryDir()", "Dealocation()"},
                            {2, 3, "TemporaryDir::deleteDirectory()",
                             "Deleting directory [" + fault.path() + "] - failed"},
                            {2, 3, "ZAV_hw_free", "Deleting logger 0, last call"},
                        }));
        std::filesystem::remove(fault.path());
    }
}

TEST_F(HWFaultTest, AFileThatCannotBeDeletedStopsNoOther) {
    scannerWrites("<QEL/>");
    ZAVHwCtx* other = nullptr;
    ASSERT_EQ(ZAV_hw_init(handle(), nullptr, nullptr, &other), 0);
    ASSERT_EQ(ZAV_hw_run(other), 0);
    const Fault fault("unlink", EPERM, 2);
    EXPECT_EQ(ZAV_hw_free(other), 0);
    EXPECT_TRUE(isConfiguration(fault.path()));
    EXPECT_EQ(fault.callsBehind(), 1);
    const std::filesystem::path workspace = std::filesystem::path(fault.path()).parent_path();
    EXPECT_EQ(std::filesystem::remove_all(workspace), 2U) << "the file and its directory are left";
}

// Both directories that the library makes: for a handle and for a context.
TEST(WorkspaceFault, NoHandleIsMadeWithoutAWorkspace) {
    const zavtest::NothingLeft nothingLeft;
    const zavtest::ScratchDir temp;
    auto* const untouched = reinterpret_cast<ZAVCtx*>(&std::cout);
    ZAVCtx* handle = untouched;
    const Fault fault("mkdir", EACCES, Fault::kEvery);
    EXPECT_EQ(ZAV_init("tests", nullptr, nullptr, temp.path().wstring().c_str(), L"/opt", &handle), 6);
    EXPECT_EQ(handle, untouched);
    EXPECT_GE(fault.failures(), 30);
}

TEST(WorkspaceFault, ADirectoryThatCannotBeMadeIsTriedUnderAnotherName) {
    const zavtest::NothingLeft nothingLeft;
    const zavtest::ScratchDir temp;
    ZAVCtx* handle = nullptr;
    {
        const Fault fault("mkdir", EEXIST, 1);
        ASSERT_EQ(ZAV_init("tests", nullptr, nullptr, temp.path().wstring().c_str(), L"/opt", &handle), 0);
        EXPECT_EQ(fault.failures(), 1);
        EXPECT_EQ(fault.callsBehind(), 1);
    }
    EXPECT_EQ(ZAV_free(handle), 0);
    EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
}

TEST(WorkspaceFault, AContextIsMadeWithoutAWorkspace) {
    Inventory inventory;
    ZAVHwCtx* context = nullptr;
    {
        const Fault fault("mkdir", ENOSPC, Fault::kEvery);
        EXPECT_EQ(ZAV_hw_init(inventory.handle(), nullptr, nullptr, &context), 0);
    }
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(ZAV_hw_run(context), 102);
    EXPECT_EQ(ZAV_hw_free(context), 0);
}

TEST(WorkspaceFault, RightsThatCannotBeSetDoNotMatter) {
    const Fault fault("chmod", EPERM, Fault::kEvery);
    Inventory inventory;
    EXPECT_EQ(fault.failures(), 2);
    inventory.scannerWrites("<QEL><Memory/></QEL>");
    EXPECT_EQ(inventory.run(), 0);
}

TEST(WorkspaceFault, WithoutTheRandomDeviceNamesAreStillFound) {
    const Fault fault("fread", EIO, Fault::kEvery);
    Inventory inventory;
    inventory.scannerWrites("<QEL><Memory/></QEL>");
    EXPECT_EQ(inventory.run(), 0);
    EXPECT_GT(fault.failures(), 10);
}

}  // namespace
}  // namespace hwtest
