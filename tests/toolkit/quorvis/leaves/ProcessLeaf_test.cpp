#include <fcntl.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "tests/toolkit/quorvis/LeafTester.h"

namespace toolkit::quorvis {
namespace {

// A program that waits until it is told to end.
class Child {
  public:
    Child(const std::string& program, std::vector<std::string> arguments) {
        int wakeUp[2] = {-1, -1};
        int started[2] = {-1, -1};
        if (::pipe(wakeUp) != 0 || ::pipe2(started, O_CLOEXEC) != 0) return;
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(wakeUp[0], STDIN_FILENO);
            ::close(wakeUp[1]);
            std::vector<char*> argv;
            for (std::string& argument : arguments) argv.push_back(argument.data());
            argv.push_back(nullptr);
            ::execv(program.c_str(), argv.data());
            ::_exit(127);
        }
        ::close(wakeUp[0]);
        ::close(started[1]);
        // Ends when the program has replaced this one.
        char none = 0;
        started_ = ::read(started[0], &none, 1) == 0;
        ::close(started[0]);
        wakeUp_ = wakeUp[1];
    }
    ~Child() {
        ::close(wakeUp_);
        ::waitpid(pid_, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    bool started() const { return started_; }
    std::string pid() const { return std::to_string(pid_); }

  private:
    pid_t pid_ = -1;
    int wakeUp_ = -1;
    bool started_ = false;
};

class ProcessLeaf : public ::testing::Test {
  protected:
    LeafResult ask(LeafTester::Attributes attributes) {
        return tester_.askLiveSystem(LeafKind::Process, std::move(attributes));
    }
    // The items of this process only: others are running too.
    std::vector<Item> itemsOf(const std::string& pid, LeafTester::Attributes attributes) {
        std::vector<Item> items = ask(std::move(attributes)).items;
        std::erase_if(items, [&pid](const Item& item) { return *item.find("pid") != pid; });
        return items;
    }
    // A program of its own: a copy of cat, which reads until its input ends.
    std::string copyOfCat(const std::string& name) {
        const auto path = std::filesystem::canonical(tester_.tree.path()) / name;
        std::filesystem::copy_file("/bin/cat", path);
        return path.string();
    }

    LeafTester tester_;
};

TEST_F(ProcessLeaf, ARunningProgramIsFound) {
    const std::string program = copyOfCat("a-program-of-a-long-name");
    const Child child(program, {"called otherwise", "-", "-"});
    ASSERT_TRUE(child.started());
    const std::vector<Item> items = itemsOf(child.pid(), {{Attribute::Exe, program}});
    ASSERT_EQ(1U, items.size());
    EXPECT_EQ(program, *items[0].find("exe"));
    EXPECT_EQ("a-program-of-a-long-name", *items[0].find("name"));
    EXPECT_EQ("/proc/" + child.pid(), items[0].source);
    EXPECT_EQ(4U, items[0].fields.size()) << "arguments are not told";

    const std::string user = *items[0].find("user");
    const std::tuple<Attribute, std::string, bool> kCases[] = {
        {Attribute::Name, "a-program-of-a-long-name", true},
        {Attribute::Name, "a-program-of-a-", true},  // the name that it gave itself
        {Attribute::Name, "a-program", false},
        {Attribute::ArgsRegex, "^called otherwise - -$", true},
        {Attribute::ArgsRegex, "a-program", false},
        {Attribute::User, user, true},
        {Attribute::User, std::to_string(::getuid()), true},
        {Attribute::User, "no such user", false},
        {Attribute::Exe, program + "x", false},
    };
    for (const auto& [attribute, value, found] : kCases)
        EXPECT_EQ(found, !itemsOf(child.pid(), {{attribute, value}}).empty()) << value;
}

TEST_F(ProcessLeaf, SecretsInArgumentsAreNotMatched) {
    const std::string program = copyOfCat("with-secrets");
    const Child child(program,
                      {"with-secrets", "-", "--", "--password=hunter2", "--token", "hunter3", "-phunter4"});
    ASSERT_TRUE(child.started());
    const auto matches = [&](const std::string& regex) {
        return !itemsOf(child.pid(), {{Attribute::ArgsRegex, regex}}).empty();
    };
    EXPECT_TRUE(matches("^with-secrets - -- --password="));
    for (const char* regex : {"hunter", "password=h", "=.{7}( |$)", "token h", "-ph"})
        EXPECT_FALSE(matches(regex)) << regex;
}

TEST_F(ProcessLeaf, ADeletedProgramIsReportedWithItsPath) {
    const std::string program = copyOfCat("deleted");
    const Child child(program, {"deleted"});
    ASSERT_TRUE(child.started());
    std::filesystem::remove(program);
    const std::vector<Item> items = itemsOf(child.pid(), {{Attribute::Name, "deleted"}});
    ASSERT_EQ(1U, items.size());
    EXPECT_EQ(program, *items[0].find("exe"));
}

TEST_F(ProcessLeaf, ItemsAreSortedByPid) {
    const std::string program = copyOfCat("several");
    const Child first(program, {"several"});
    const Child second(program, {"several"});
    ASSERT_TRUE(first.started() && second.started());
    std::vector<int> pids;
    for (const Item& item : ask({}).items) pids.push_back(std::stoi(*item.find("pid")));
    EXPECT_GE(pids.size(), 3U) << "these two and the test itself";
    EXPECT_TRUE(std::ranges::is_sorted(pids));
}

TEST_F(ProcessLeaf, BelowARootThereAreNoProcesses) {
    const LeafResult result = tester_.ask(LeafKind::Process, {{Attribute::Name, "cat"}});
    EXPECT_TRUE(result.items.empty());
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(result));
}

TEST_F(ProcessLeaf, WhenDisabledItIsUnknown) {
    tester_.settings.processes.enabled = false;
    const LeafResult result = ask({});
    EXPECT_TRUE(result.items.empty());
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::Config}, LeafTester::codes(result));
}

TEST_F(ProcessLeaf, AnInvalidRegexIsUnknown) {
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(ask({{Attribute::ArgsRegex, "("}})));
}

}  // namespace
}  // namespace toolkit::quorvis
