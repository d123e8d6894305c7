// The state in which a child starts.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <vector>

#include "kest/Descriptor.h"
#include "tests/kest/Children.h"

namespace kest::test {
namespace {

// Saves the host's descriptor 2 and restores it at the end.
class RedirectedError {
  public:
    explicit RedirectedError(const std::string& path)
        : saved_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
        const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        EXPECT_EQ(dup3(file.number(), STDERR_FILENO, O_CLOEXEC), STDERR_FILENO);
    }
    RedirectedError(const RedirectedError&) = delete;
    RedirectedError& operator=(const RedirectedError&) = delete;
    ~RedirectedError() { EXPECT_EQ(dup2(saved_.number(), STDERR_FILENO), STDERR_FILENO); }

  private:
    Descriptor saved_;
};

// Blocks all signals and ignores those that hosts commonly ignore, except SIGCHLD.
class DeafHost {
  public:
    DeafHost() {
        sigset_t all;
        sigfillset(&all);
        EXPECT_EQ(pthread_sigmask(SIG_SETMASK, &all, &before_), 0);
        for (const int number : ignored_) handlers_.push_back(std::signal(number, SIG_IGN));
    }
    DeafHost(const DeafHost&) = delete;
    DeafHost& operator=(const DeafHost&) = delete;
    ~DeafHost() {
        for (std::size_t i = 0; i < handlers_.size(); ++i) std::signal(ignored_[i], handlers_[i]);
        EXPECT_EQ(pthread_sigmask(SIG_SETMASK, &before_, nullptr), 0);
    }

  private:
    const std::vector<int> ignored_ = {SIGHUP,  SIGINT,  SIGQUIT,  SIGPIPE, SIGTERM,
                                       SIGTSTP, SIGUSR1, SIGRTMIN, SIGRTMAX};
    std::vector<void (*)(int)> handlers_;
    sigset_t before_ = {};
};

// Limits the number of descriptors and restores the limit at the end.
class DescriptorLimit {
  public:
    explicit DescriptorLimit(rlim_t limit) {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
        const rlimit changed = {limit, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &changed), 0);
    }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;
    ~DescriptorLimit() { EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before_), 0); }

  private:
    rlimit before_ = {};
};

// The lowest free numbers above the standard streams, as many as two pipes need.
std::vector<int> nextDescriptors() {
    std::vector<Descriptor> taken;
    std::vector<int> numbers;
    const Descriptor any(open("/dev/null", O_RDONLY | O_CLOEXEC));
    // `any` is one of them unless the host lacks a standard stream.
    if (any.number() > STDERR_FILENO) numbers.push_back(any.number());
    while (numbers.size() < 4) {
        taken.emplace_back(fcntl(any.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        numbers.push_back(taken.back().number());
    }
    return numbers;
}

std::string descriptorsOfChild() {
    const std::string output = run(child("ShowDescriptors")).output;
    const std::size_t error = output.find("2 ");
    return error == std::string::npos
               ? output
               : output.substr(0, error) + "2\n" + output.substr(output.find('\n', error) + 1);
}

constexpr const char* standardStreams = "0 /dev/null\n1 pipe\n2\n";

TEST(ChildState, StandardInputIsEmpty) {
    EXPECT_EQ(run(child("ShowInput")), (Outcome{"0\n", 0}));
}

TEST(ChildState, StandardErrorIsTheOneOfTheHost) {
    const zavtest::ScratchDir directory;
    const std::string path = directory.path() / "stderr";
    {
        const RedirectedError redirected(path);
        EXPECT_EQ(run(child("WriteError")), (Outcome{"", 0}));
    }
    EXPECT_EQ(zavtest::readAll(path), "complaint\n");
}

TEST(ChildState, HasTheStandardStreamsAndNoOtherDescriptor) {
    EXPECT_EQ(descriptorsOfChild(), standardStreams);
}

TEST(ChildState, HasNoneOfTheManyDescriptorsOfItsHost) {
    const DescriptorLimit limit(3000);
    std::vector<Descriptor> descriptors;
    for (int i = 0; i < 2000; ++i) {
        descriptors.emplace_back(open("/dev/zero", i % 2 == 0 ? O_RDONLY : O_RDONLY | O_CLOEXEC));
        ASSERT_TRUE(descriptors.back().isOpen()) << i;
    }
    EXPECT_EQ(descriptorsOfChild(), standardStreams);
}

TEST(ChildState, HasNoneOfThePipesOfOtherChildren) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> other = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(descriptorsOfChild(), standardStreams);
    openForWriting(pipe);
}

TEST(ChildState, IsStartedAsLongAsThePipesHaveRoom) {
    const DescriptorLimit limit(static_cast<rlim_t>(nextDescriptors().back()) + 1);
    EXPECT_EQ(run(child("ShowInput")), (Outcome{"0\n", 0}));
}

TEST(ChildState, IsNotStartedWhenTheHostIsOutOfDescriptors) {
    const NothingLeft nothingLeft;
    for (const int room : nextDescriptors()) {
        std::unique_ptr<ChildProcess> process;
        {
            const DescriptorLimit limit(static_cast<rlim_t>(room));
            process = launch(child("ExitWith") + " 0");
        }
        EXPECT_EQ(process, nullptr) << "limit " << room;
    }
}

TEST(ChildState, NoSignalIsBlockedOrIgnored) {
    const std::string none = "0000000000000000\n";
    const std::string expected = "SigBlk:\t" + none + "SigIgn:\t" + none;
    EXPECT_EQ(run(child("ShowSignals")).output, expected);
    const DeafHost host;
    EXPECT_EQ(run(child("ShowSignals")).output, expected);
}

}  // namespace
}  // namespace kest::test
