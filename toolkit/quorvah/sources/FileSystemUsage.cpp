#include "toolkit/quorvah/sources/FileSystemUsage.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "kest/Descriptor.h"
#include "kest/Retry.h"

namespace toolkit::quorvah {
namespace {

struct Reply {
    bool answered = false;
    FileSystemUsage usage;
};

Reply ask(const char* path) {
    struct stat status {};
    struct statvfs sizes {};
    if (stat(path, &status) != 0 || statvfs(path, &sizes) != 0) return {};
    FileSystemUsage usage;
    usage.deviceMajor = major(status.st_dev);
    usage.deviceMinor = minor(status.st_dev);
    usage.blockSize = counted(sizes.f_frsize);
    usage.size = product(counted(sizes.f_blocks), usage.blockSize);
    usage.available = product(counted(sizes.f_bavail), usage.blockSize);
    usage.inodes = counted(sizes.f_files);
    usage.inodesFree = counted(sizes.f_ffree);
    usage.maxNameLength = counted(sizes.f_namemax);
    return {true, usage};
}

// A child process that queries file systems, because a query may block forever. The child is killed when its parent
// dies.
class UsageProcess {
  public:
    UsageProcess(const std::vector<std::string>& paths, std::size_t first) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return;
        replies_ = kest::Descriptor(ends[0]);
        const kest::Descriptor out(ends[1]);
        child_ = fork();
        if (child_ == 0) answerAll(paths, first, out.number());
    }
    ~UsageProcess() {
        if (child_ <= 0) return;
        kill(child_, SIGKILL);
        // A child that hangs in the kernel does not die when it is killed. It is left behind.
        for (int tries = 0; tries < 20 && waitpid(child_, nullptr, WNOHANG) == 0; ++tries)
            poll(nullptr, 0, 5);
    }
    UsageProcess(const UsageProcess&) = delete;
    UsageProcess& operator=(const UsageProcess&) = delete;

    // Waits for the next reply. Returns false if there is none in time.
    bool next(Reply& reply, std::chrono::milliseconds patience) const {
        pollfd waiting{replies_.number(), POLLIN, 0};
        const int ready =
            kest::retryInterrupted([&] { return poll(&waiting, 1, static_cast<int>(patience.count())); });
        // A reply is shorter than PIPE_BUF, so it is written and read as a whole.
        return ready == 1 && read(replies_.number(), &reply, sizeof reply) == sizeof reply;
    }

  private:
    [[noreturn]] static void answerAll(const std::vector<std::string>& paths, std::size_t first, int out) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (std::size_t i = first; i < paths.size(); ++i) {
            const Reply reply = ask(paths[i].c_str());
            if (write(out, &reply, sizeof reply) != sizeof reply) break;
        }
        _exit(0);
    }

    kest::Descriptor replies_;
    pid_t child_ = -1;
};

}  // namespace

UsageAnswers askUsage(const std::vector<std::string>& paths, std::chrono::milliseconds patience) {
    UsageAnswers answers;
    answers.usages.resize(paths.size());
    int silences = 0;
    for (std::size_t first = 0; first < paths.size() && silences < 3;) {
        const UsageProcess asker(paths, first);
        Reply reply;
        while (first < paths.size() && asker.next(reply, patience)) {
            if (reply.answered) answers.usages[first] = reply.usage;
            ++first;
        }
        if (first == paths.size()) break;
        answers.complete = false;
        ++silences;
        ++first;
    }
    return answers;
}

}  // namespace toolkit::quorvah
