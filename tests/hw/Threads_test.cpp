// Hosts that cancel a thread while it is in the library, or that have closed their standard streams.
#include <pthread.h>
#include <sys/stat.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "tests/hw/Inventory.h"
#include "tests/support/Child.h"

namespace hwtest {
namespace {

// The work of a thread that can be cancelled at any instruction. Nothing in it needs clean-up.
void* scanForEver(void* context) {
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    for (;;) {
        ZAV_hw_run(static_cast<ZAVHwCtx*>(context));
        pthread_testcancel();
    }
}

void* askForEver(void* context) {
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    for (;;) {
        int number = 0;
        const wchar_t* text = nullptr;
        ZAV_hw_get_returncode(static_cast<ZAVHwCtx*>(context), &number);
        ZAV_hw_get_value(static_cast<ZAVHwCtx*>(context), 3, 0, L"Size", &text);
        pthread_testcancel();
    }
}

void* openForEver(void* temp) {
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    for (;;) {
        ZAVCtx* handle = nullptr;
        ZAV_init("tests", nullptr, nullptr, static_cast<const wchar_t*>(temp), nullptr, &handle);
        ZAV_free(handle);
    }
}

// Cancels such a thread `course` microseconds after its start and returns its result.
void* endOf(void* (*work)(void*), void* argument, useconds_t course) {
    pthread_t thread = {};
    EXPECT_EQ(pthread_create(&thread, nullptr, work, argument), 0);
    usleep(course);
    EXPECT_EQ(pthread_cancel(thread), 0);
    void* end = nullptr;
    EXPECT_EQ(pthread_join(thread, &end), 0);
    return end;
}

class Cancellation : public InventoryTest {
  protected:
    Cancellation() { scannerWrites("<QEL><Memory><Size>1</Size></Memory></QEL>"); }
};

TEST_F(Cancellation, TakesEffectAfterTheScan) {
    for (useconds_t course = 0; course < 10'000; course += 500) {
        EXPECT_EQ(endOf(scanForEver, context(), course), PTHREAD_CANCELED);
    }
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(value(3, 0, L"Size"), L"1");
}

TEST_F(Cancellation, TakesEffectAfterTheQuery) {
    ASSERT_EQ(run(), 0);
    for (useconds_t course = 0; course < 200; ++course) {
        EXPECT_EQ(endOf(askForEver, context(), course), PTHREAD_CANCELED);
    }
    EXPECT_EQ(value(3, 0, L"Size"), L"1");
}

// Runs in a child each time, as the cancelled thread may leave a handle unreleased.
TEST_F(Cancellation, TakesEffectAfterOpeningAndReleasing) {
    const zavtest::ScratchDir elsewhere;
    std::wstring temp = elsewhere.path().wstring();
    for (useconds_t course = 0; course < 1000; course += 20) {
        EXPECT_TRUE(zavtest::holdsInChild(
            [&] { return endOf(openForEver, temp.data(), course) == PTHREAD_CANCELED; }));
    }
}

// The scanner waits until its line has been received. The functions that the callback uses are cancellation points.
TEST_F(Cancellation, DoesNotTakeEffectInACallback) {
    scannerIs("PrintThenWait");
    struct Host {
        static void callback(int, int, void* userData, const char*, const char* message) {
            auto& self = *static_cast<Host*>(userData);
            if (std::string(message) != "STDOUT data: [first]") return;
            pthread_cancel(pthread_self());
            std::ofstream(self.pipe) << "go on";
        }
        static void* scan(void* userData) {
            auto& self = *static_cast<Host*>(userData);
            self.code = ZAV_hw_run(self.context);
            return nullptr;
        }
        std::string pipe;
        ZAVHwCtx* context = nullptr;
        int code = -1;
    } host{(path() / "pipe").string()};
    ASSERT_EQ(mkfifo(host.pipe.c_str(), 0600), 0);
    ASSERT_EQ(ZAV_hw_init(handle(), Host::callback, &host, &host.context), 0);
    ASSERT_EQ(ZAV_hw_setopt(host.context, 0, 1), 0);
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(&thread, nullptr, Host::scan, &host), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_EQ(host.code, 0);
    const wchar_t* size = nullptr;
    EXPECT_EQ(ZAV_hw_get_value(host.context, 3, 0, L"Size", &size), 0);
    EXPECT_STREQ(size, L"1");
    EXPECT_EQ(ZAV_hw_free(host.context), 0);
}

TEST_F(Cancellation, IsNotConfusedWithACallbackThatEndsItsThread) {
    struct Host {
        static void callback(int, int, void* userData, const char*, const char*) {
            if (static_cast<Host*>(userData)->ends) pthread_exit(userData);
        }
        static void* ask(void* context) {
            const wchar_t* name = nullptr;
            ZAV_hw_get_group_name(static_cast<ZAVHwCtx*>(context), 4, &name);
            return nullptr;
        }
        std::atomic<bool> ends = false;
    } host;
    ZAVHwCtx* context = nullptr;
    ASSERT_EQ(ZAV_hw_init(handle(), Host::callback, &host, &context), 0);
    host.ends = true;
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(&thread, nullptr, Host::ask, context), 0);
    void* end = nullptr;
    ASSERT_EQ(pthread_join(thread, &end), 0);
    EXPECT_EQ(end, &host);
    host.ends = false;
    EXPECT_EQ(ZAV_hw_free(context), 0);
}

// A daemon that opens the library after it has closed its standard streams, and that still writes to them.
TEST(HostWithoutStandardStreams, DoesNotWriteIntoTheScannersFiles) {
    EXPECT_TRUE(zavtest::holdsInChild([] {
        for (const int stream : {0, 1, 2}) ::close(stream);
        Inventory inventory;
        inventory.scannerIs("ShowConfiguration");
        std::atomic<int> written = 0;
        std::atomic<bool> over = false;
        std::thread host([&] {
            while (!over) written += ::write(1, "line of the host\n", 17) > 0 ? 1 : 0;
        });
        bool clean = true;
        for (int round = 0; round < 50 && clean; ++round) {
            clean = inventory.run() == 0 &&
                    inventory.value(3, 0, L"Configuration").find(L"line of the host") == std::wstring::npos;
        }
        over = true;
        host.join();
        return clean && written == 0;
    }));
}

}  // namespace
}  // namespace hwtest
