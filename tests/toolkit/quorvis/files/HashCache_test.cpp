#include "toolkit/quorvis/files/HashCache.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>

#include "tests/support/Program.h"
#include "toolkit/quorvis/files/Files.h"

namespace toolkit::quorvis {
namespace {

namespace fs = std::filesystem;
constexpr std::int64_t kSecond = 1'000'000'000;
constexpr const char* kSumOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
const std::string kOtherSum(64, '0');

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * kSecond + time.tv_nsec;
}

FileState stateOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(0, stat(path.c_str(), &status)) << path;
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
            nanoseconds(status.st_ctim), nanoseconds(status.st_mtim)};
}

bool keepsStatesHere(const fs::path& path) {
    return keepsStates(kest::Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)));
}

// Replaces the hashes in the cache, so that results from the cache differ from those of the files.
void spoil(const fs::path& cache) {
    std::string text = zavtest::readAll(cache);
    for (std::size_t end = text.find('\n', text.find('\n') + 1); end != std::string::npos;
         end = text.find('\n', end + 1))
        text.replace(end - kOtherSum.size(), kOtherSum.size(), kOtherSum);
    std::ofstream(cache, std::ios::binary) << text;
}

std::size_t linesIn(const fs::path& cache) {
    const std::string text = zavtest::readAll(cache);
    return static_cast<std::size_t>(std::ranges::count(text, '\n'));
}

class HashCacheTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!keepsStatesHere(tree_.path())) GTEST_SKIP() << "no hash is kept on this file system";
        tree_.write("f", "abc");
    }

    // The hash as found by a scan at a later time, at which the files of the test are no longer recent.
    std::string sum(const std::string& path = "/f") { return sumIn(Root(tree_.path().string()), path); }
    std::string sumIn(const Root& root, const std::string& path) {
        HashCache cache(cache_.string(), currentTime() + 10 * kSecond);
        Files files(root, settings_);
        files.useHashCache(cache);
        const Files::Content content = files.sha256(path);
        events_ = cache.save();
        return content.access == Access::Ok ? *content.bytes : "?";
    }
    void expectEvent(EventCode code) const {
        ASSERT_EQ(1U, events_.size());
        EXPECT_EQ(code, events_.front().code) << events_.front().text;
        EXPECT_EQ(cache_.string(), events_.front().path);
    }
    // Repeats the change until the times of the file system have advanced.
    void change(const std::function<void()>& change) const {
        const FileState before = stateOf(tree_.path() / "f");
        do change();
        while (stateOf(tree_.path() / "f").changed == before.changed);
    }

    zavtest::ScratchDir tree_;
    zavtest::ScratchDir place_;
    fs::path cache_ = place_.path() / "hashes";
    Settings settings_;
    std::vector<Event> events_;
};

TEST_F(HashCacheTest, NextRunUsesTheCache) {
    EXPECT_EQ(kSumOfAbc, sum());
    spoil(cache_);
    const FileState written = stateOf(cache_);
    EXPECT_EQ(kOtherSum, sum());
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(written == stateOf(cache_)) << "nothing is new, so nothing is written";
    fs::remove(cache_);
    EXPECT_EQ(kSumOfAbc, sum());
}

TEST_F(HashCacheTest, ChangedFileIsHashedAgain) {
    const fs::path file = tree_.path() / "f";
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"content", [this] { tree_.write("f", "abd"); }},
        {"size", [this] { tree_.write("f", "abcd"); }},
        {"mode", [&] { fs::permissions(file, fs::perms(0604)); }},
        {"content, with the old time",
         [&] {
             const auto time = fs::last_write_time(file);
             tree_.write("f", "dcba");
             fs::last_write_time(file, time);
         }},
        {"time", [&] { fs::last_write_time(file, fs::file_time_type()); }},
        {"another file", [this, &file] { fs::rename(tree_.write("g", "dcba"), file); }},
    };
    for (const auto& [what, how] : changes) {
        sum();
        spoil(cache_);
        change(how);
        const std::string found = sum();
        EXPECT_NE(kOtherSum, found) << what;
        const Root root(tree_.path().string());
        Files files(root, settings_);
        EXPECT_EQ(*files.sha256("/f").bytes, found) << what;
        spoil(cache_);
        EXPECT_EQ(kOtherSum, sum()) << what << ": what was found is kept";
    }
    EXPECT_EQ(3U, linesIn(cache_)) << "one for the first file, one for that in its place";
}

TEST_F(HashCacheTest, EveryPartOfTheStateIsCompared) {
    const FileState state{1, 2, 3, 4, 5};
    HashCache cache(cache_.string());
    cache.remember(state, "sha256", "ab");
    ASSERT_NE(nullptr, cache.find(state, "sha256"));
    for (const FileState& other :
         {FileState{9, 2, 3, 4, 5}, FileState{1, 9, 3, 4, 5}, FileState{1, 2, 9, 4, 5},
          FileState{1, 2, 3, 9, 5}, FileState{1, 2, 3, 4, 9}})
        EXPECT_EQ(nullptr, cache.find(other, "sha256"));
}

TEST_F(HashCacheTest, RecentlyChangedFilesAreNotStored) {
    const std::int64_t changed = stateOf(tree_.path() / "f").changed;
    for (const auto& [now, kept] : {std::pair{changed - 10 * kSecond, false},
                                    {changed + 2 * kSecond - 1, false},
                                    {changed + 2 * kSecond, true}}) {
        HashCache cache(cache_.string(), now);
        const Root root(tree_.path().string());
        Files files(root, settings_);
        files.useHashCache(cache);
        EXPECT_EQ(kSumOfAbc, *files.sha256("/f").bytes);
        EXPECT_TRUE(cache.save().empty());
        EXPECT_EQ(kept, fs::exists(cache_)) << now - changed;
    }
}

TEST_F(HashCacheTest, PseudoFilesAreNeitherHashedNorStored) {
    settings_.secrets.allow = {tree_.path().string(), "/proc"};
    EXPECT_EQ("?", sumIn(Root(), "/proc/version"));
    EXPECT_FALSE(fs::exists(cache_));
    EXPECT_EQ(64U, sumIn(Root(), (tree_.path() / "f").string()).size());
    EXPECT_TRUE(fs::exists(cache_));
}

TEST_F(HashCacheTest, StoresOneHashPerAlgorithm) {
    const FileState state{1, 2, 3, 4, 5};
    HashCache first(cache_.string());
    first.remember(state, "sha256", "aa");
    first.remember(state, "sha512", "bb");
    EXPECT_TRUE(first.save().empty());
    EXPECT_EQ("quorvis-hashes 1\n1 2 3 4 5 sha256 aa\n1 2 3 4 5 sha512 bb\n", zavtest::readAll(cache_));
    HashCache second(cache_.string());
    ASSERT_NE(nullptr, second.find(state, "sha256"));
    ASSERT_NE(nullptr, second.find(state, "sha512"));
    EXPECT_EQ("aa", *second.find(state, "sha256"));
    EXPECT_EQ("bb", *second.find(state, "sha512"));
    EXPECT_EQ(nullptr, second.find(state, "sha1"));
}

TEST_F(HashCacheTest, FilesOfDifferentTreesAreDistinguished) {
    const zavtest::ScratchDir other;
    other.write("f", "");
    EXPECT_EQ(kSumOfAbc, sum());
    const std::string empty = sumIn(Root(other.path().string()), "/f");
    EXPECT_NE(kSumOfAbc, empty);
    EXPECT_EQ(kSumOfAbc, sum());
    EXPECT_EQ(empty, sumIn(Root(other.path().string()), "/f"));
    EXPECT_EQ(3U, linesIn(cache_));
    EXPECT_EQ(1, std::distance(fs::directory_iterator(tree_.path()), {})) << "nothing is written there";
}

TEST_F(HashCacheTest, DamagedCacheIsReplaced) {
    sum();
    spoil(cache_);
    const std::string good = zavtest::readAll(cache_);
    const std::string header = "quorvis-hashes 1\n";
    for (const std::string& bad :
         {std::string("quorvis-hashes 2\n") + good.substr(header.size()), std::string("quorvis-hashes 1"),
          good.substr(0, good.size() - 1), good.substr(0, good.size() - 3), good + "\n", good + "x\n",
          good + std::string(1, '\0') + "\n", good + "1 2 3 4 sha256 aa\n", good + "1 2 3 4 5 sha256\n",
          good + "1 2 3 4 5 sha256 AA\n", good + "1 2 3 4 5 sha256 aa \n", good + "1 2 3 4 5  aa\n",
          good + "1 2 3 4 -5x sha256 aa\n", good + "-1 2 3 4 5 sha256 aa\n", good + "1  2 3 4 5 sha256 aa\n",
          good + "1 99999999999999999999 3 4 5 sha256 aa\n"}) {
        std::ofstream(cache_, std::ios::binary) << bad;
        EXPECT_EQ(kSumOfAbc, sum()) << bad;
        expectEvent(EventCode::Parse);
        EXPECT_EQ(kSumOfAbc, sum());
        EXPECT_TRUE(events_.empty()) << bad;
    }
}

TEST_F(HashCacheTest, TooLargeCacheIsReplaced) {
    sum();
    fs::resize_file(cache_, (std::uintmax_t{64} << 20) + 1);
    EXPECT_EQ(kSumOfAbc, sum());
    expectEvent(EventCode::Parse);
    EXPECT_EQ(2U, linesIn(cache_));
}

TEST_F(HashCacheTest, IsNeverWrittenTooLarge) {
    HashCache cache(cache_.string());
    const std::string hash(std::size_t{1} << 20, 'a');
    for (std::uint64_t i = 0; i < 70; ++i) cache.remember({1, i, 3, 4, 5}, "long", hash);
    EXPECT_TRUE(cache.save().empty());
    HashCache next(cache_.string());
    EXPECT_NE(nullptr, next.find({1, 62, 3, 4, 5}, "long"));
    EXPECT_EQ(nullptr, next.find({1, 63, 3, 4, 5}, "long"));
    EXPECT_TRUE(next.save().empty());
}

TEST_F(HashCacheTest, LargeCacheDropsUnusedHashes) {
    const auto stateOfNumber = [](std::uint64_t number) { return FileState{1, number, 3, 4, 5}; };
    HashCache first(cache_.string());
    for (std::uint64_t i = 1; i <= 100'000; ++i) first.remember(stateOfNumber(i), "sha256", "aa");
    EXPECT_TRUE(first.save().empty());
    EXPECT_EQ(100'001U, linesIn(cache_));
    HashCache second(cache_.string());
    EXPECT_NE(nullptr, second.find(stateOfNumber(7), "sha256"));
    second.remember(stateOfNumber(7), "sha512", "bb");
    EXPECT_TRUE(second.save().empty());
    EXPECT_EQ("quorvis-hashes 1\n1 7 3 4 5 sha256 aa\n1 7 3 4 5 sha512 bb\n", zavtest::readAll(cache_));
}

TEST_F(HashCacheTest, UntrustedCacheIsNeitherUsedNorReplaced) {
    sum();
    spoil(cache_);
    const std::string good = zavtest::readAll(cache_);
    const std::pair<const char*, std::function<bool()>> places[] = {
        {"writable to the group", [this] { return chmod(cache_.c_str(), 0620) == 0; }},
        {"writable to all", [this] { return chmod(cache_.c_str(), 0602) == 0; }},
        {"of another user", [this] { return chown(cache_.c_str(), 4711, 4711) == 0; }},
        {"a link",
         [this] {
             fs::rename(cache_, place_.path() / "real");
             fs::create_symlink("real", cache_);
             return true;
         }},
        {"a pipe", [this] { return fs::remove(cache_) && mkfifo(cache_.c_str(), 0600) == 0; }},
        {"a directory", [this] { return fs::remove(cache_) && fs::create_directory(cache_); }},
        {"another kind of file",
         [this] {
             std::ofstream(cache_) << "precious\n";
             return true;
         }},
    };
    for (const auto& [what, make] : places) {
        fs::remove(cache_);
        std::ofstream(cache_) << good;
        if (!make()) {
            EXPECT_NE(0U, geteuid()) << what << " cannot be made";  // only an administrator gives files away
            continue;
        }
        struct stat before {};
        struct stat after {};
        ASSERT_EQ(0, lstat(cache_.c_str(), &before));
        EXPECT_EQ(kSumOfAbc, sum()) << what;
        expectEvent(EventCode::Denied);
        ASSERT_EQ(0, lstat(cache_.c_str(), &after));
        EXPECT_EQ(before.st_ino, after.st_ino) << what;
        EXPECT_EQ(nanoseconds(before.st_mtim), nanoseconds(after.st_mtim)) << what;
    }
}

TEST_F(HashCacheTest, UnwritableCacheDoesNotFailTheScan) {
    for (const fs::path& path :
         {place_.path() / "missing" / "hashes", tree_.path() / "f" / "hashes", fs::path("/proc/hashes")}) {
        cache_ = path;
        EXPECT_EQ(kSumOfAbc, sum()) << path;
        expectEvent(EventCode::Io);
    }
}

TEST_F(HashCacheTest, HasMode0600AndFollowsNoLink) {
    const fs::path other = place_.write("other", "precious");
    HashCache cache(cache_.string());
    fs::create_symlink(other, cache_);
    cache.remember({1, 2, 3, 4, 5}, "sha256", "aa");
    const mode_t before = umask(0);
    EXPECT_TRUE(cache.save().empty());
    umask(before);
    EXPECT_EQ("precious", zavtest::readAll(other));
    EXPECT_EQ(fs::file_type::regular, fs::symlink_status(cache_).type());
    EXPECT_EQ(fs::perms(0600), fs::status(cache_).permissions());
}

TEST_F(HashCacheTest, StoredHashOfUnreadableFileIsNotDisclosed) {
    tree_.write("etc/gshadow", "abc");
    HashCache cache(cache_.string());
    cache.remember(stateOf(tree_.path() / "etc/gshadow"), "sha256", kOtherSum);
    cache.save();
    EXPECT_EQ("?", sum("/etc/gshadow"));
}

// Runs the scanner on a program of this machine, which is not a recently changed file.
class ScanWithCache : public ::testing::Test {
  protected:
    void SetUp() override {
        const fs::path program = fs::canonical("/bin/sh");
        if (!keepsStatesHere(program) || stateOf(program).changed > currentTime() - 2 * kSecond)
            GTEST_SKIP() << "no hash of " << program << " is kept";
        const Root root;
        const Settings settings;
        const std::string sum = *Files(root, settings).sha256(program.string()).bytes;
        const std::string path = program.parent_path().filename() / program.filename();
        signatures_ =
            dir_.write("sig.xml", R"(<Signatures><Signature guid="s" name="n"><Match><File path="/)" + path +
                                      R"(" sha256=")" + sum + R"("/></Match></Signature></Signatures>)");
        root_ = program.parent_path().parent_path();
    }
    // Whether the scan found the program by its hash.
    bool found(const std::string& settings) {
        const fs::path config =
            dir_.write("config.xml", "<C><Plugin name=\"Evaluation\">" + settings + "</Plugin></C>");
        const zavtest::Finished run = zavtest::runProgram(
            QUORVIS_PROGRAM,
            {"-c", config.string(), "-o", (dir_.path() / "out.xml").string(), "-e",
             (dir_.path() / "warnings.xml").string(), "-i", signatures_.string(), "--root", root_.string()});
        EXPECT_EQ(0, run.status) << run.errors;
        const std::string output = zavtest::readAll(dir_.path() / "out.xml");
        EXPECT_NE(std::string::npos, output.find("complete=\"true\"")) << output;
        return output.find("guid=\"s\"") != std::string::npos;
    }
    std::string warnings() const { return zavtest::readAll(dir_.path() / "warnings.xml"); }
    std::string setting() const { return "<Attribute name=\"cache\" value=\"" + cache_.string() + "\"/>"; }

    zavtest::ScratchDir dir_;
    zavtest::ScratchDir place_;
    fs::path cache_ = place_.path() / "hashes";
    fs::path signatures_;
    fs::path root_;
};

TEST_F(ScanWithCache, NextScanUsesTheCache) {
    EXPECT_TRUE(found(setting()));
    EXPECT_EQ(2U, linesIn(cache_));
    EXPECT_EQ(fs::perms(0600), fs::status(cache_).permissions());
    EXPECT_TRUE(found(setting()));
    spoil(cache_);
    EXPECT_FALSE(found(setting()));
    EXPECT_EQ(std::string::npos, warnings().find("<Event ")) << warnings();
    EXPECT_TRUE(found("")) << "without the setting it is not asked";
}

TEST_F(ScanWithCache, NothingIsWrittenWithoutTheSetting) {
    EXPECT_TRUE(found(""));
    EXPECT_TRUE(fs::is_empty(place_.path()));
    EXPECT_EQ(4, std::distance(fs::directory_iterator(dir_.path()), {}))
        << "what it was given and its output";
}

TEST_F(ScanWithCache, ProblemsAreEventsOfASuccessfulScan) {
    fs::create_directory(cache_);
    EXPECT_TRUE(found(setting()));
    EXPECT_NE(std::string::npos, warnings().find("<Event code=\"denied\"")) << warnings();
    fs::remove_all(place_.path());
    EXPECT_TRUE(found(setting()));
    EXPECT_NE(std::string::npos, warnings().find("<Event code=\"io\"")) << warnings();
}

#ifndef ZAV_SANITIZED
TEST_F(ScanWithCache, CacheThatNeedsTooMuchMemoryIsNotUsed) {
    std::ofstream file(cache_, std::ios::binary);
    file << "quorvis-hashes 1\n";
    for (int i = 0; i < 700'000; ++i) file << "1 " << i << " 3 4 5 sha256 " << kOtherSum << '\n';
    file.close();
    const std::uintmax_t size = fs::file_size(cache_);
    ASSERT_LT(size, std::uintmax_t{64} << 20);
    fs::permissions(cache_, fs::perms(0600));
    EXPECT_TRUE(found(setting() + "<Attribute name=\"memoryLimit\" value=\"1\"/>"));
    EXPECT_NE(std::string::npos, warnings().find("it exceeds the memory limit")) << warnings();
    EXPECT_EQ(size, fs::file_size(cache_));
}
#endif

}  // namespace
}  // namespace toolkit::quorvis
