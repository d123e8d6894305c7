// ZAV_init and ZAV_free when an allocation fails and when the host's callback throws, at every possible point.
#include <gtest/gtest.h>

#include <cerrno>

#include "core/ZAVCtx.h"
#include "kest/Text.h"
#include "tests/support/Allocations.h"
#include "tests/support/Descriptors.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/ZavIni.h"

namespace zav::test {
namespace {

namespace fs = std::filesystem;

// Throws at one message, counted from 1, or at every message for kAlways.
struct ThrowingHost {
    static constexpr int kAlways = -1;

    static void callback(int, int, void* userData, const char*, const char*) {
        auto& host = *static_cast<ThrowingHost*>(userData);
        if (host.throwAt == kAlways || ++host.messages == host.throwAt) throw 7;
    }

    int throwAt = 0;
    int messages = 0;
};

class ZAVCtxFailures : public testing::Test {
  protected:
    // The value of the output argument that a failed call must not change.
    struct Left {
        long blocks = zavtest::liveBlocks();
        std::size_t descriptors = zavtest::openDescriptors();

        bool operator==(const Left&) const = default;
    };

    int init(ZAVlogCallback callback, void* userData, ZAVCtx** handle) {
        return ZAV_init("product", callback, userData, tempDir_.c_str(), L"/usr/zav/bin/of/some/length",
                        handle);
    }

    // The test hangs if the logger's lock is still held.
    static void expectLockFree() {
        zavtest::LogRecorder recorder;
        ZAVlog(1, zavtest::LogRecorder::callback, &recorder).traceMIN("f", "free");
        EXPECT_EQ(recorder.messages.size(), 1U);
    }

    zavtest::ScratchDir temp_;
    std::wstring tempDir_ = kest::widen(temp_.path().string());
    zavtest::ZavIni ini_{"ZAV_HomeDirectory = /opt/zav\nZAV_Exploiters = other\n"};
};

TEST_F(ZAVCtxFailures, FailedAllocationDuringInitIsReportedAndLeavesNothing) {
    auto* const untouched = reinterpret_cast<ZAVCtx*>(this);
    std::vector<int> codes;
    for (int nth = 1;; ++nth) {
        ZAVCtx* handle = untouched;
        const Left before;
        bool failed = false;
        int code = 0;
        {
            const zavtest::FailingAllocation failing(nth);
            code = init(nullptr, nullptr, &handle);
            failed = failing.happened();
        }
        if (!failed) {
            EXPECT_EQ(ZAV_free(handle), 0);
            break;
        }
        EXPECT_EQ(handle, untouched) << nth;
        EXPECT_EQ(Left(), before) << nth;
        EXPECT_TRUE(fs::is_empty(temp_.path())) << nth;
        expectLockFree();
        codes.push_back(code);
    }
    // At least the handle, its name and its logger.
    ASSERT_GT(codes.size(), 10U);
    EXPECT_EQ(std::vector<int>(codes.begin(), codes.begin() + 3), (std::vector<int>{5, 5, 4}));
    for (std::size_t i = 3; i < codes.size(); ++i) EXPECT_EQ(codes[i], 5) << i;
}

TEST_F(ZAVCtxFailures, FailedAllocationWhileOpeningTheFileIsReported) {
    const zavtest::OpenRule noMemory(zavtest::kZavIni, ENOMEM);
    ZAVCtx* handle = nullptr;
    EXPECT_EQ(init(nullptr, nullptr, &handle), 5);
    EXPECT_EQ(handle, nullptr);
    EXPECT_TRUE(fs::is_empty(temp_.path()));
}

void writeFile(ZAVCtx* handle) {
    std::wstring path;
    ASSERT_EQ(handle->tempDir->getTmpFile(path, L"out_", L".xml"), 0);
    std::ofstream(fs::path(path)) << "x";
}

TEST_F(ZAVCtxFailures, ReleaseNeedsNoMemory) {
    ZAVCtx* handle = nullptr;
    ASSERT_EQ(init(nullptr, nullptr, &handle), 0);
    writeFile(handle);
    {
        const zavtest::FailingAllocation failing(1);
        EXPECT_EQ(ZAV_free(handle), 0);
        EXPECT_FALSE(failing.happened());
    }
    EXPECT_TRUE(fs::is_empty(temp_.path()));
}

TEST_F(ZAVCtxFailures, ReleaseThatHasNoMemoryForAMessageDropsItAndGoesOn) {
    for (int nth = 1; nth <= 3; ++nth) {
        const Left before;
        ThrowingHost host;
        ZAVCtx* handle = nullptr;
        ASSERT_EQ(init(ThrowingHost::callback, &host, &handle), 0);
        writeFile(handle);
        host.messages = 0;
        {
            const zavtest::FailingAllocation failing(nth);
            EXPECT_EQ(ZAV_free(handle), 0);
            EXPECT_TRUE(failing.happened());
        }
        EXPECT_EQ(host.messages, 2) << "of three";
        EXPECT_EQ(Left(), before);
        EXPECT_TRUE(fs::is_empty(temp_.path()));
    }
}

TEST_F(ZAVCtxFailures, CallbackThatThrowsDuringInitIsTreatedLikeMissingMemory) {
    for (int nth = 1;; ++nth) {
        ThrowingHost host{nth};
        ZAVCtx* handle = nullptr;
        const Left before;
        const int code = init(ThrowingHost::callback, &host, &handle);
        if (code == 0) {
            EXPECT_EQ(host.messages, nth - 1);
            EXPECT_EQ(nth, 11) << "ten messages of a call that succeeds";
            host.throwAt = 0;
            EXPECT_EQ(ZAV_free(handle), 0);
            break;
        }
        ASSERT_EQ(code, 5) << nth;
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(Left(), before) << nth;
        EXPECT_TRUE(fs::is_empty(temp_.path())) << nth;
        expectLockFree();
    }
}

TEST_F(ZAVCtxFailures, CallbackThatThrowsDuringReleaseStopsNothing) {
    for (const int throwAt : {1, 2, 3, ThrowingHost::kAlways}) {
        const Left before;
        ThrowingHost host;
        ZAVCtx* handle = nullptr;
        ASSERT_EQ(init(ThrowingHost::callback, &host, &handle), 0);
        writeFile(handle);
        host = {throwAt};
        EXPECT_EQ(ZAV_free(handle), 5);
        EXPECT_EQ(Left(), before);
        EXPECT_TRUE(fs::is_empty(temp_.path()));
        expectLockFree();
    }
}

}  // namespace
}  // namespace zav::test
