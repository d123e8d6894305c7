#include "core/ZAVlog.h"

#include <gtest/gtest.h>
#include <printf.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "tests/support/Allocations.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ZavIni.h"

namespace zav::test {
namespace {

using zavtest::LogRecorder;
using zavtest::Message;
using zavtest::OpenRule;

const char* const kNullDevice = "/dev/null";

static_assert(std::has_virtual_destructor_v<ZAVlog>, "owners delete loggers through a pointer");

class ZAVlogTest : public testing::Test {
  protected:
    LogRecorder recorder_;
    ZAVlog log_{1, LogRecorder::callback, &recorder_};
};

// The locale determines which characters "%S" can convert.
class Locale {
  public:
    explicit Locale(const char* name) : before_(std::setlocale(LC_ALL, nullptr)) {
        if (std::setlocale(LC_ALL, name) == nullptr) throw std::runtime_error("setlocale");
    }
    ~Locale() { std::setlocale(LC_ALL, before_.c_str()); }
    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;

  private:
    std::string before_;
};

TEST(ZAVlog, PassesLevelComponentFunctionAndText) {
    for (const int component : {1, 3, 4, 0, -7}) {
        LogRecorder recorder;
        ZAVlog log(component, LogRecorder::callback, &recorder);
        log.traceMIN("first()", "a %d", 1);
        log.traceMID("Second::second", "b %s", "two");
        log.traceMAX("third", "c %S", L"three");
        log.trace(0, "fourth", "d");
        log.trace(99, "fifth", "%s%d%S", "e", 5, L"!");
        log.trace(-1, "sixth", "%%");
        EXPECT_EQ(recorder.messages, (std::vector<Message>{{0, component, "first()", "a 1"},
                                                           {1, component, "Second::second", "b two"},
                                                           {2, component, "third", "c three"},
                                                           {0, component, "fourth", "d"},
                                                           {99, component, "fifth", "e5!"},
                                                           {-1, component, "sixth", "%"}}));
    }
}

TEST(ZAVlog, PassesTheHostsPointerAndTheFunctionNameUnchanged) {
    struct Seen {
        const char* function = nullptr;
    } seen;
    ZAVlog log(
        1,
        [](int, int, void* userData, const char* function, const char*) {
            static_cast<Seen*>(userData)->function = function;
        },
        &seen);
    const char* const name = "ZAV_init";
    log.traceMAX(name, "x");
    EXPECT_EQ(seen.function, name);
}

TEST(ZAVlog, AcceptsANullUserPointer) {
    static int calls;
    calls = 0;
    ZAVlog log(
        1, [](int, int, void* userData, const char*, const char*) { calls += userData == nullptr; }, nullptr);
    log.traceMIN("f", "x");
    EXPECT_EQ(calls, 1);
}

TEST(ZAVlog, WithoutACallbackNothingIsOpenedOrAllocated) {
    const OpenRule nullDevice(kNullDevice);
    const long before = zavtest::liveBlocks();
    ZAVlog log(1, nullptr, nullptr);
    log.traceMIN("f", "a %d", 1);
    log.traceMID("f", "b");
    log.traceMAX("f", "c");
    log.trace(0, "f", "d");
    EXPECT_EQ(nullDevice.count(), 0);
    EXPECT_EQ(zavtest::liveBlocks(), before);
}

TEST_F(ZAVlogTest, EachMessageOpensTheNullDeviceOnce) {
    const OpenRule nullDevice(kNullDevice);
    for (int i = 1; i <= 3; ++i) {
        log_.traceMAX("f", "text");
        EXPECT_EQ(nullDevice.count(), i);
    }
}

TEST_F(ZAVlogTest, NullFormatIsDropped) {
    const OpenRule nullDevice(kNullDevice);
    log_.traceMIN("f", nullptr);
    log_.traceMID("f", nullptr);
    log_.traceMAX("f", nullptr);
    log_.trace(0, "f", nullptr);
    EXPECT_TRUE(recorder_.messages.empty());
    EXPECT_EQ(nullDevice.count(), 0);
}

TEST_F(ZAVlogTest, EmptyTextIsDropped) {
    log_.traceMIN("f", "");
    log_.traceMID("f", "%s", "");
    log_.traceMAX("f", "%S", L"");
    EXPECT_TRUE(recorder_.messages.empty());
    log_.traceMAX("f", " ");
    EXPECT_EQ(recorder_.textsOf("f"), std::vector<std::string>{" "});
}

TEST_F(ZAVlogTest, TextOfAnyLengthIsDeliveredWhole) {
    for (const std::size_t length : {1U, 4095U, 4096U, 9000U, 70000U, 3000000U}) {
        const std::string text(length, 'x');
        log_.traceMAX("f", "%s", text.c_str());
        EXPECT_EQ(zavtest::lastMallocSize(), length + 5);
        EXPECT_EQ(recorder_.messages.back().text, text);
    }
}

TEST_F(ZAVlogTest, WideTextIsConvertedByTheLocale) {
    log_.traceMAX("f", "[%S]", L"plain ~");
    EXPECT_EQ(recorder_.messages.back().text, "[plain ~]");
    const Locale utf8("C.UTF-8");
    log_.traceMAX("f", "[%S]", L"\xE4\x20AC\x1F600");
    EXPECT_EQ(recorder_.messages.back().text, "[\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80]");
}

TEST_F(ZAVlogTest, TextThatCannotBeConvertedIsDroppedNotCut) {
    {
        const Locale plain("C");
        log_.traceMAX("f", "before %S behind", L"\xE4");
        log_.traceMAX("f", "%S", L"long enough to be written\x20AC");
    }
    const Locale utf8("C.UTF-8");
    const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800), L'\0'};
    const wchar_t negative[] = {L'a', static_cast<wchar_t>(-61), L'\0'};
    log_.traceMIN("f", "%S", surrogate);
    log_.traceMIN("f", "%S", negative);
    EXPECT_TRUE(recorder_.messages.empty());
}

TEST_F(ZAVlogTest, WithoutTheNullDeviceMessagesAreDropped) {
    {
        const OpenRule missing(kNullDevice, ENOENT);
        log_.traceMIN("f", "lost");
        EXPECT_EQ(missing.count(), 1);
    }
    log_.traceMIN("f", "kept");
    EXPECT_EQ(recorder_.textsOf("f"), std::vector<std::string>{"kept"});
}

TEST_F(ZAVlogTest, MessageThatCannotBeMeasuredIsDropped) {
    const OpenRule full(kNullDevice, "/dev/full");
    log_.traceMIN("f", "%s", std::string(1 << 20, 'x').c_str());
    EXPECT_TRUE(recorder_.messages.empty());
}

TEST_F(ZAVlogTest, WithoutMemoryTheMessageIsDropped) {
    {
        const zavtest::FailingAllocation failing(1);
        log_.traceMIN("f", "lost");
        EXPECT_TRUE(failing.happened());
    }
    log_.traceMIN("f", "kept");
    EXPECT_EQ(recorder_.textsOf("f"), std::vector<std::string>{"kept"});
}

// A custom printf conversion whose output grows by one digit with each evaluation, starting with "1".
class GrowingConversion {
  public:
    GrowingConversion() {
        digits = 0;
        if (register_printf_specifier('Y', print, arguments) != 0)
            throw std::runtime_error("printf specifier");
    }
    ~GrowingConversion() { register_printf_specifier('Y', nullptr, nullptr); }
    GrowingConversion(const GrowingConversion&) = delete;
    GrowingConversion& operator=(const GrowingConversion&) = delete;

    static inline int digits;

  private:
    static int print(std::FILE* stream, const printf_info* /*info*/, const void* const* /*values*/) {
        return std::fprintf(stream, "%s", std::string(static_cast<std::size_t>(++digits), '1').c_str());
    }
    static int arguments(const printf_info* /*info*/, std::size_t /*count*/, int* /*types*/, int* /*sizes*/) {
        return 0;
    }
};

TEST_F(ZAVlogTest, TextThatGrowsBetweenTheTwoPassesIsDropped) {
    const GrowingConversion growing;
    const long before = zavtest::liveBlocks();
    const std::string format = "value %Y";
    log_.traceMIN("f", format.c_str());
    EXPECT_EQ(GrowingConversion::digits, 2);
    EXPECT_TRUE(recorder_.messages.empty());
    EXPECT_EQ(zavtest::liveBlocks(), before);
}

TEST(ZAVlog, BufferIsReleasedAfterTheCallback) {
    ZAVlog log(
        1, [](int, int, void*, const char*, const char*) {}, nullptr);
    const long before = zavtest::liveBlocks();
    log.traceMAX("f", "text %d", 1);
    EXPECT_EQ(zavtest::liveBlocks(), before);
}

TEST(ZAVlog, ThrowingCallbackReleasesTheLockAndItsMemory) {
    ZAVlog throwing(
        1, [](int, int, void*, const char*, const char*) { throw 7; }, nullptr);
    const long before = zavtest::liveBlocks();
    EXPECT_THROW(throwing.traceMIN("f", "a"), int);
    EXPECT_THROW(throwing.traceMID("f", "a"), int);
    EXPECT_THROW(throwing.traceMAX("f", "a"), int);
    EXPECT_THROW(throwing.trace(0, "f", "a"), int);
    EXPECT_EQ(zavtest::liveBlocks(), before);
    LogRecorder recorder;
    ZAVlog(3, LogRecorder::callback, &recorder).traceMIN("f", "goes on");
    EXPECT_EQ(recorder.textsOf("f"), std::vector<std::string>{"goes on"});
}

TEST(ZAVlog, LoggersWithoutCallbackConstructorsDeliverNothing) {
    const OpenRule nullDevice(kNullDevice);
    ZAVlog none;
    ZAVlog onlyComponent(7);
    for (ZAVlog* const log : {&none, &onlyComponent}) {
        log->traceMIN("f", "a");
        log->traceMAX("f", "b");
    }
    EXPECT_EQ(nullDevice.count(), 0);
}

TEST(ZAVlog, DestructionLogsNothing) {
    LogRecorder recorder;
    delete new ZAVlog(1, LogRecorder::callback, &recorder);
    EXPECT_TRUE(recorder.messages.empty());
}

TEST(ZAVlog, LockIsAcquiredByOneAndReleasedByAnyOtherOperation) {
    for (const int unlock : {0, 2, -1}) {
        EXPECT_EQ(ZAVlog::mutex(1), 0);
        EXPECT_EQ(ZAVlog::mutex(unlock), 0);
    }
}

}  // namespace
}  // namespace zav::test
