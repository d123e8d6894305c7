// silent_mounts TYPE PATH [TYPE PATH]... -- PROGRAM [ARG...]: runs a program that sees FUSE file systems of these types
// ("fuse.sshfs") mounted over these paths. They answer when they are mounted, and never again. Ends with the program's exit
// status, with 77 and a message if such file systems cannot be mounted here, and with 99 if the program takes two minutes.
#include <fcntl.h>
#include <linux/fuse.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kCannotMount = 77;
constexpr int kTookTooLong = 99;
constexpr int kMaxSeconds = 120;

[[noreturn]] void giveUp(const char* what) {
    std::fprintf(stderr, "%s: %s\n", what, std::strerror(errno));
    std::exit(kCannotMount);
}

void writeFile(const char* path, const std::string& text) {
    std::ofstream(path) << text << std::flush;
}

// Enters a mount namespace, as somebody who may mount.
void enterNamespace() {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (::unshare(CLONE_NEWNS) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) giveUp("unshare");
        writeFile("/proc/self/setgroups", "deny");
        writeFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
        writeFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    }
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) giveUp("mount /");
}

// Answers the first request, by which the kernel agrees on a version. Reads all others.
void serve(int device) {
    alignas(fuse_in_header) static thread_local char request[std::size_t{1} << 17];
    for (;;) {
        const ssize_t size = ::read(device, request, sizeof request);
        if (size < 0 && errno != EINTR) return;
        const auto* const header = reinterpret_cast<const fuse_in_header*>(request);
        if (size <= 0 || header->opcode != FUSE_INIT) continue;
        struct {
            fuse_out_header header;
            fuse_init_out init;
        } answer{};
        answer.header.len = sizeof answer;
        answer.header.unique = header->unique;
        answer.init.major = FUSE_KERNEL_VERSION;
        answer.init.minor = FUSE_KERNEL_MINOR_VERSION;
        answer.init.max_write = 4096;
        if (::write(device, &answer, sizeof answer) < 0) return;
    }
}

void mountSilent(const std::string& type, const std::string& path) {
    const int device = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (device < 0) giveUp("/dev/fuse");
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) giveUp(path.c_str());
    char options[128];
    std::snprintf(options, sizeof options, "fd=%d,rootmode=%o,user_id=0,group_id=0,allow_other", device,
                  status.st_mode & S_IFMT);
    if (::mount("silent", path.c_str(), type.c_str(), MS_NOSUID | MS_NODEV, options) != 0)
        giveUp(path.c_str());
    std::thread(serve, device).detach();
}

int run(char** command) {
    const pid_t child = ::fork();
    if (child < 0) giveUp("fork");
    if (child == 0) {
        ::execv(command[0], command);
        ::_exit(127);
    }
    for (int tenths = 0; tenths < 10 * kMaxSeconds; ++tenths) {
        int status = 0;
        if (::waitpid(child, &status, WNOHANG) == child)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        ::usleep(100'000);
    }
    ::kill(child, SIGKILL);
    return kTookTooLong;
}

}  // namespace

int main(int argc, char** argv) {
    int i = 1;
    enterNamespace();
    for (; i + 1 < argc && std::string(argv[i]) != "--"; i += 2) mountSilent(argv[i], argv[i + 1]);
    if (i + 1 >= argc) return 2;
    // What is stuck in these file systems is let go when this process ends and closes them.
    std::_Exit(run(argv + i + 1));
}
