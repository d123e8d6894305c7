#include "toolkit/quorvis/walk/WalkProgress.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"

namespace toolkit::quorvis {
namespace {

TEST(WalkProgress, SharesAddUpToTheWhole) {
    WalkProgress progress;
    EXPECT_EQ(0, progress.done());
    progress.add(10, 0.25);
    EXPECT_NEAR(0.25, progress.done(), 1e-6);
    progress.add(10, 1.5);
    EXPECT_EQ(1, progress.done());
}

TEST(WalkProgress, KnownNumbersOfNamesCountForHalf) {
    WalkProgress progress;
    progress.expect(100);
    progress.add(10, 0.5);
    EXPECT_NEAR(0.3, progress.done(), 1e-6);
    progress.add(1000, 0);
    EXPECT_NEAR(0.75, progress.done(), 1e-6) << "more names than expected";
    progress.end();
    EXPECT_EQ(1, progress.done());
}

// A tree with a thousand directories of different depths, some of which cannot be entered.
class ProgressOfAWalk : public testing::Test {
  protected:
    ProgressOfAWalk() {
        for (int i = 0; i < 1000; ++i) {
            const std::string place = "opt/a" + std::to_string(i % 7) + "/b" + std::to_string(i % 91);
            tree_.write(place + "/c" + std::to_string(i) + "/f", "");
        }
        std::filesystem::create_directory_symlink("nowhere", tree_.path() / "opt/broken");
    }

    zavtest::ScratchDir tree_;
};

TEST_F(ProgressOfAWalk, NeverDecreasesAndEndsComplete) {
    for (const unsigned jobs : {1U, 3U}) {
        Settings settings;
        settings.evaluation.jobs = jobs;
        const Root root(tree_.path().string());
        EvaluationContext context(root, settings);
        WalkProgress progress;
        std::atomic<bool> over = false;
        bool grew = true;
        std::thread observer([&] {
            for (double before = 0; !over;) {
                const double now = progress.done();
                grew = grew && now >= before && now <= 1;
                before = now;
            }
        });
        context.tree().showProgress(progress);
        context.tree().searchAhead({{"/opt/**/f", 0, ""}, {"/srv/*", 0, ""}});
        over = true;
        observer.join();
        EXPECT_TRUE(grew);
        EXPECT_NEAR(1, progress.done(), 0.001) << jobs;
        EXPECT_EQ(1000U, context.tree().countKnown({"/opt/**/f", 0, ""}));
        EXPECT_EQ(0U, context.tree().countKnown({"/other", 0, ""}));
    }
}

}  // namespace
}  // namespace toolkit::quorvis
