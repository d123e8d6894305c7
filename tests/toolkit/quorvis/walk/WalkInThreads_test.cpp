#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/walk/TreeSearch.h"

namespace {

const std::thread::id firstThread = std::this_thread::get_id();
std::atomic<bool> othersLackMemory = false;
std::atomic<int> threadsToBeHad = 1000;
std::atomic<int> threadsStarted = 0;

}  // namespace

void* operator new(std::size_t size) {
    if (othersLackMemory && std::this_thread::get_id() != firstThread) throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*work)(void*),
                          void* argument) {
    if (threadsStarted == threadsToBeHad) return EAGAIN;
    ++threadsStarted;
    return __real_pthread_create(thread, attributes, work, argument);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace toolkit::quorvis {
namespace {

namespace fs = std::filesystem;

// The hits as text, one line per path and event.
std::string textOf(const GlobHits& hits) {
    std::string text = hits.incomplete ? "incomplete\n" : "";
    for (const std::string& path : hits.paths) text += path + '\n';
    for (const Event& event : hits.events)
        text += std::to_string(static_cast<int>(event.code)) + ' ' + event.path + ' ' + event.text + '\n';
    return text;
}

// 8 directories with 8 others in each, which hold 4 others, with files and links.
class WalkInThreads : public ::testing::Test {
  protected:
    WalkInThreads() {
        for (int i = 0; i < 256; ++i) {
            const std::string number = std::to_string(1000 + i);
            const fs::path place = tree_.path() / "opt" / ("a" + std::to_string(i / 32)) /
                                   ("b" + std::to_string(i / 4 % 8)) / ("c" + std::to_string(i % 4));
            fs::create_directories(place / "deeper");
            tree_.write(fs::relative(place, tree_.path()).string() + "/lib" + number + ".so", "");
            if (i % 7 == 0) fs::create_symlink("..", place / "up");
            if (i % 11 == 0) fs::create_symlink("/opt", place / "top");
            if (i % 13 == 0) fs::create_symlink("here", place / "here");
        }
    }

    std::vector<GlobHits> walk(unsigned jobs, const std::vector<GlobRequest>& requests) {
        const Root root(tree_.path().string());
        settings_.evaluation.jobs = jobs;
        EvaluationContext context(root, settings_);
        threadsStarted = 0;
        return context.tree().walk(requests);
    }
    // Walks with several numbers of threads. Expects the hits of one thread.
    void expectSame(const std::vector<GlobRequest>& requests) {
        const std::vector<GlobHits> expected = walk(1, requests);
        EXPECT_EQ(0, threadsStarted);
        for (const unsigned jobs : {2U, 3U, 8U, 8U, 64U}) {
            const std::vector<GlobHits> found = walk(jobs, requests);
            EXPECT_LE(1, threadsStarted);
            EXPECT_GE(jobs - 1, static_cast<unsigned>(threadsStarted));
            for (std::size_t i = 0; i < requests.size(); ++i)
                EXPECT_EQ(textOf(expected[i]), textOf(found[i])) << requests[i].pattern << " with " << jobs;
        }
    }

    zavtest::ScratchDir tree_;
    Settings settings_;
};

TEST_F(WalkInThreads, TheHitsDoNotDependOnTheNumberOfThreads) {
    const std::vector<GlobRequest> requests = {
        {"/opt/**", 0, ""},
        {"/opt/**/*.so", 0, ""},
        {"/opt/*/b3/*/lib*", 0, ""},
        {"/opt/*/*/*/up/*", 0, ""},
        {"/opt/*/*/*/top/*/b0", 0, ""},
        {"/opt/**/here/*", 0, ""},
        {"/opt/**/c3/**/*", 0, "/opt/*/b2"},
        {"/opt/**/*7*", 2, ""},
        {"/opt/{*/b1/c1,*/b7/c1}/*.so", 0, ""},
    };
    const std::vector<GlobHits> hits = walk(1, requests);
    EXPECT_EQ(256U, hits[1].paths.size());
    EXPECT_FALSE(hits[4].paths.empty());
    expectSame(requests);
}

TEST_F(WalkInThreads, OfTooManyMatchesAndEventsTheSameOnesAreKept) {
    settings_.fileSystem.maxMatches = 20;
    settings_.fileSystem.maxDepth = 4;
    const std::vector<GlobHits> hits = walk(1, {{"/opt/**", 0, ""}});
    EXPECT_EQ(20U, hits[0].paths.size());
    EXPECT_LT(1U, hits[0].events.size());
    expectSame({{"/opt/**", 0, ""}, {"/opt/*/*/*/*.so", 0, ""}, {"/opt/**/lib*", 0, ""}});
}

TEST_F(WalkInThreads, SomeNamesOfEachLargeDirectoryAreSeen) {
    settings_.fileSystem.maxEntriesPerDirectory = 5;
    for (const unsigned jobs : {1U, 2U, 8U}) {
        const GlobHits hits = walk(jobs, {{"/opt/**/lib*", 0, ""}})[0];
        EXPECT_EQ(5U * 5 * 4, hits.paths.size());
        EXPECT_EQ(1U + 5, hits.events.size());
        for (const Event& event : hits.events) EXPECT_EQ(EventCode::LimitEntries, event.code);
    }
}

TEST_F(WalkInThreads, NamesAreCountedExactly) {
    settings_.fileSystem.maxMatches = 10'000;
    const std::size_t all = walk(1, {{"/opt/**", 0, ""}})[0].paths.size() + 1;
    for (const unsigned jobs : {1U, 2U, 8U}) {
        settings_.fileSystem.maxEntries = all;
        const GlobHits whole = walk(jobs, {{"/opt/**", 0, ""}})[0];
        EXPECT_FALSE(whole.incomplete) << jobs;
        EXPECT_EQ(all - 1, whole.paths.size()) << "with /opt itself";
        settings_.fileSystem.maxEntries = all - 1;
        const GlobHits cut = walk(jobs, {{"/opt/**", 0, ""}})[0];
        EXPECT_TRUE(cut.incomplete) << jobs;
        ASSERT_EQ(1U, cut.events.size());
        EXPECT_EQ(EventCode::LimitEntries, cut.events[0].code);
        EXPECT_EQ(all - 2, cut.paths.size()) << jobs;
    }
}

TEST_F(WalkInThreads, AFewDirectoriesTakeOneThread) {
    EXPECT_EQ(4U, walk(8, {{"/opt/a0/b1/*", 0, ""}})[0].paths.size());
    EXPECT_EQ(0, threadsStarted);
}

TEST_F(WalkInThreads, ThreadsThatCannotStartAreNotNeeded) {
    for (const int available : {0, 1, 3}) {
        threadsToBeHad = available;
        EXPECT_EQ(256U, walk(8, {{"/opt/**/*.so", 0, ""}})[0].paths.size());
        EXPECT_EQ(available, threadsStarted);
    }
    threadsToBeHad = 1000;
}

TEST_F(WalkInThreads, AThreadWithoutMemoryEndsTheWalk) {
    othersLackMemory = true;
    EXPECT_THROW(walk(3, {{"/opt/**/*.so", 0, ""}}), std::bad_alloc);
    othersLackMemory = false;
    EXPECT_EQ(256U, walk(3, {{"/opt/**/*.so", 0, ""}})[0].paths.size());
}

}  // namespace
}  // namespace toolkit::quorvis
