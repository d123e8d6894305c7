// Scans whose worker hangs or dies while it reads a file.
#include "toolkit/quorvis/evaluation/ScanSupervisor.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <new>

#include "tests/support/ScratchDir.h"

namespace {

// pread() of files of these sizes hangs or fails.
constexpr off_t kHangs = 4'001;
constexpr off_t kKills = 4'002;
constexpr off_t kNeedsMemory = 4'003;

}  // namespace

extern "C" ssize_t __real_pread(int file, void* buffer, size_t size, off_t offset);
extern "C" ssize_t __wrap_pread(int file, void* buffer, size_t size, off_t offset) {
    struct stat status {};
    if (::fstat(file, &status) == 0) {
        while (status.st_size == kHangs) ::pause();
        if (status.st_size == kKills) ::kill(::getpid(), SIGKILL);
        if (status.st_size == kNeedsMemory) throw std::bad_alloc();
    }
    return __real_pread(file, buffer, size, offset);
}

namespace toolkit::quorvis {
namespace {

class ScanSupervisor : public testing::Test {
  protected:
    void SetUp() override {
        tree_.write("good", "x");
        tree_.write("other", "x");
        tree_.write("hangs", std::string(kHangs, 'x'));
        tree_.write("kills", std::string(kKills, 'x'));
        tree_.write("needs-memory", std::string(kNeedsMemory, 'x'));
    }
    // Scans with a signature for each of these files.
    ScanResult scan(const std::vector<std::string>& files) {
        std::string text;
        for (const std::string& file : files) text += signatureOf(file);
        return scanText(text);
    }
    static std::string signatureOf(const std::string& file) {
        return "<Signature guid=\"" + file + "\" name=\"n\"><Match><Content path=\"/" + file +
               "\" regex=\"x\"/></Match></Signature>";
    }
    static std::string detectionOf(const std::string& file) {
        return "<Detection><Match><Content path=\"/" + file +
               "\" regex=\"x\"/></Match><Output><Variable name=\"file\" value=\"" + file +
               "\"/></Output></Detection>";
    }
    ScanResult scanText(const std::string& text) {
        const std::string path = dir_.write("sig.xml", "<Signatures>" + text + "</Signatures>").string();
        const DocumentText signatures = readDocument(path);
        const Root root(tree_.path().string());
        Options options;
        options.signatures = path;
        return superviseScan({options, settings_, root, {}, signatures, std::chrono::steady_clock::now()},
                             events_);
    }
    // "aborted kills, unresolved kills"
    std::string events() const {
        std::string text;
        for (const EventList::Entry& entry : events_.entries()) {
            text.append(text.empty() ? "" : ", ").append(nameOf(entry.event.code));
            if (!entry.event.guid.empty()) text.append(" ").append(entry.event.guid);
        }
        return text;
    }

    zavtest::ScratchDir tree_;
    zavtest::ScratchDir dir_;
    Settings settings_;
    EventList events_;
};

TEST_F(ScanSupervisor, AFileThatKillsTheWorkerAffectsOnlyItsSignature) {
    const ScanResult found = scan({"good", "kills", "good"});
    EXPECT_EQ(2U, found.matchCount);
    EXPECT_EQ(3U, found.signatureCount);
    EXPECT_EQ("aborted kills, unresolved kills", events());
    EXPECT_TRUE(events_.reachedLimit());
}

TEST_F(ScanSupervisor, AFileThatKillsTheWorkerAffectsOnlyItsDetection) {
    const ScanResult found = scanText(signatureOf("good") + "<Signature guid=\"both\" name=\"n\">" +
                                      detectionOf("good") + detectionOf("kills") + detectionOf("kills") +
                                      detectionOf("other") + "</Signature>" + signatureOf("good"));
    EXPECT_EQ(4U, found.matchCount);
    EXPECT_EQ("aborted both, aborted both, unresolved both", events());
}

TEST_F(ScanSupervisor, AFileThatKillsTheWorkerInTheLastDetectionKeepsTheOthers) {
    const ScanResult found = scanText("<Signature guid=\"both\" name=\"n\">" + detectionOf("good") +
                                      detectionOf("kills") + "</Signature>" + signatureOf("good"));
    EXPECT_EQ(2U, found.matchCount);
    EXPECT_EQ("aborted both, unresolved both", events());
}

TEST_F(ScanSupervisor, AFileThatAlwaysKillsTheWorkerEndsTheScanWithPartialResults) {
    std::vector<std::string> files(30, "kills");
    files.insert(files.begin(), "good");
    EXPECT_EQ(1U, scan(files).matchCount);
    EXPECT_TRUE(events_.reachedLimit());
}

TEST_F(ScanSupervisor, AReadThatHangsEndsAtTheDeadlineAndKeepsTheResults) {
    settings_.evaluation.timeLimit = std::chrono::seconds(1);
    const ScanResult found = scan({"good", "hangs"});
    EXPECT_EQ(1U, found.matchCount);
    EXPECT_TRUE(events_.reachedLimit());
}

TEST_F(ScanSupervisor, ALeafThatHangsAffectsOnlyItsSignature) {
    settings_.evaluation.timeLimit = std::chrono::seconds(16);
    const ScanResult found = scan({"good", "hangs", "good"});
    EXPECT_EQ(2U, found.matchCount);
    EXPECT_EQ("aborted hangs, unresolved hangs", events());
}

TEST_F(ScanSupervisor, HashingManyLargeFilesEndsAtTheDeadlineOfTheLeaf) {
    settings_.evaluation.timeLimit = std::chrono::seconds(4);
    for (int i = 0; i < 100; ++i) {
        tree_.write("many/" + std::to_string(i), "");
        std::filesystem::resize_file(tree_.path() / "many" / std::to_string(i), std::uintmax_t{256} << 20);
    }
    const ScanResult found =
        scanText("<Signature guid=\"hash\" name=\"n\"><Match><Glob pattern=\"/many/*\" sha256=\"" +
                 std::string(64, '0') + "\"/></Match></Signature>" + signatureOf("good"));
    EXPECT_EQ(1U, found.matchCount);
    EXPECT_EQ("deadline hash, unresolved hash", events());
}

TEST_F(ScanSupervisor, RunningOutOfMemoryAffectsOneSignature) {
    const ScanResult found = scan({"good", "needs-memory", "good"});
    EXPECT_EQ(2U, found.matchCount);
    EXPECT_EQ("limit-memory needs-memory, unresolved needs-memory", events());
}

}  // namespace
}  // namespace toolkit::quorvis
