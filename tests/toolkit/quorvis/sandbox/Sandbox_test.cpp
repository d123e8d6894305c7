#include "toolkit/quorvis/sandbox/Sandbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <thread>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"

namespace toolkit::quorvis {
namespace {

[[maybe_unused]] long startProcess(unsigned long flags) {
    const long started = syscall(SYS_clone, flags, nullptr, nullptr, nullptr, nullptr);
    if (started == 0) _exit(0);
    return started;
}

class Sandbox : public ::testing::Test {
  protected:
    // Runs the check in a sandboxed child.
    template <typename Check>
    void inside(const Check& check) {
        if (prctl(PR_GET_SECCOMP) < 0) GTEST_SKIP() << "this kernel has no filters of system calls";
        const pid_t child = fork();
        if (child == 0) {
            EXPECT_EQ("", enterSandbox(settings_));
            check();
            _exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status)) << status;
        EXPECT_EQ(0, WEXITSTATUS(status));
    }

    zavtest::ScratchDir tree_;
    Settings settings_;
};

TEST_F(Sandbox, BlocksProgramsNetworkAndOtherProcesses) {
    const pid_t parent = getpid();
    inside([parent] {
        const auto expectRefused = [](long result, const char* what) {
            EXPECT_EQ(-1, result) << what;
            EXPECT_EQ(EPERM, errno) << what;
        };
        char program[] = "/bin/true";
        char* const arguments[] = {program, nullptr};
        expectRefused(execv(program, arguments), "execve");
        expectRefused(syscall(SYS_execveat, AT_FDCWD, program, arguments, nullptr, 0), "execveat");
        expectRefused(socket(AF_INET, SOCK_STREAM, 0), "socket");
        expectRefused(connect(0, nullptr, 0), "connect");
#ifndef ZAV_SANITIZED
        expectRefused(syscall(SYS_ptrace, 0, 0, 0, 0), "ptrace");
        expectRefused(startProcess(SIGCHLD), "clone");
        expectRefused(startProcess(CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_NEWNET), "clone");
        EXPECT_EQ(-1, syscall(SYS_clone3, nullptr, 0));
        EXPECT_EQ(ENOSYS, errno);
#ifdef SYS_vfork
        errno = 0;
        expectRefused(syscall(SYS_fork), "fork");
#endif
#endif
        expectRefused(syscall(SYS_process_vm_readv, parent, nullptr, 0, nullptr, 0, 0), "process_vm_readv");
        expectRefused(kill(parent, 0), "kill");
        expectRefused(syscall(SYS_unshare, 0), "unshare");
        EXPECT_EQ(0, kill(getpid(), 0));
        pid_t started = 0;
        EXPECT_NE(0, posix_spawn(&started, program, nullptr, nullptr, arguments, nullptr));
    });
}

TEST_F(Sandbox, AllowsFilesAndThreads) {
    tree_.write("opt/a/f", "abc");
    inside([this] {
        const Root root(tree_.path().string());
        EvaluationContext context(root, settings_);
        EXPECT_EQ("abc", *context.files().read("/opt/a/f", 10).bytes);
        EXPECT_EQ(64U, context.files().sha256("/opt/a/f").bytes->size());
        EXPECT_EQ(1U, context.tree().hits({"/opt/**/f", 0, ""}).paths.size());
        tree_.write("out", "written");
        EXPECT_EQ("written", zavtest::readAll(tree_.path() / "out"));
        int value = 0;
        std::thread([&value] { value = 1; }).join();
        EXPECT_EQ(1, value);
    });
}

TEST_F(Sandbox, AllowsWalksInManyThreads) {
    for (int i = 0; i < 200; ++i)
        tree_.write("opt/" + std::to_string(i / 20) + "/" + std::to_string(i) + "/f", "");
    settings_.evaluation.memoryLimit = 1;
    settings_.evaluation.jobs = 64;
    inside([this] {
        const Root root(tree_.path().string());
        EvaluationContext context(root, settings_);
        EXPECT_EQ(200U, context.tree().hits({"/opt/**/f", 0, ""}).paths.size());
    });
}

TEST_F(Sandbox, RootKeepsOnlyCapabilitiesForReading) {
    tree_.write("closed/f", "abc");
    std::filesystem::permissions(tree_.path() / "closed", std::filesystem::perms::none);
    inside([this] {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
        EXPECT_EQ(0, syscall(SYS_capget, &header, sets));
        const std::uint32_t kept =
            CAP_TO_MASK(CAP_DAC_READ_SEARCH) | CAP_TO_MASK(CAP_DAC_OVERRIDE) | CAP_TO_MASK(CAP_SYS_PTRACE);
        EXPECT_EQ(0U, sets[0].permitted & ~kept);
        EXPECT_EQ(0U, sets[1].permitted);
        EXPECT_EQ(1, prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0));
        EXPECT_EQ(geteuid() == 0 ? "abc" : "", zavtest::readAll(tree_.path() / "closed/f"));
    });
    std::filesystem::permissions(tree_.path() / "closed", std::filesystem::perms::all);
}

#ifndef ZAV_SANITIZED
TEST_F(Sandbox, MemoryLimitHasAMinimum) {
    settings_.evaluation.memoryLimit = 1;
    inside([] {
        const auto map = [](std::size_t size) {
            return mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        };
        EXPECT_NE(MAP_FAILED, map(std::size_t{32} << 20));
        EXPECT_EQ(MAP_FAILED, map(std::size_t{64} << 20));
        rlimit cores{};
        EXPECT_EQ(0, getrlimit(RLIMIT_CORE, &cores));
        EXPECT_EQ(0U, cores.rlim_cur);
    });
}
#endif

TEST_F(Sandbox, TooLargeFileIsAFailedWrite) {
    inside([this] {
        const int file = open((tree_.path() / "huge").c_str(), O_WRONLY | O_CREAT, 0600);
        EXPECT_EQ(-1, pwrite(file, "x", 1, off_t{1} << 40));
        EXPECT_EQ(EFBIG, errno);
        EXPECT_EQ(1, pwrite(file, "x", 1, 0));
        close(file);
    });
}

}  // namespace
}  // namespace toolkit::quorvis
