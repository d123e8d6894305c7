#include "toolkit/quorvis/facts/Processes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <map>
#include <new>
#include <optional>
#include <utility>

#include "kest/Descriptor.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/facts/Accounts.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxArgumentBytes = std::size_t{16} << 10;
constexpr std::size_t kMaxBytes = std::size_t{64} << 20;  // of all processes
constexpr std::string_view kDeleted = " (deleted)";

// At most the first `limit` bytes of a file of a process. Empty when the process has ended.
std::string readStart(int directory, const char* name, std::size_t limit) {
    const kest::Descriptor file(::openat(directory, name, O_RDONLY | O_CLOEXEC | O_NOCTTY));
    std::string text(limit, '\0');
    std::size_t size = 0;
    while (file.isOpen() && size < limit) {
        const ssize_t count = ::read(file.number(), text.data() + size, limit - size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        size += static_cast<std::size_t>(count);
    }
    text.resize(size);
    return text;
}

void readExe(int directory, Process& process) {
    std::array<char, 4096> target;
    const ssize_t length = ::readlinkat(directory, "exe", target.data(), target.size());
    if (length < 0) {
        process.exeDenied = errno == EACCES || errno == EPERM;
        return;
    }
    process.exe.assign(target.data(), static_cast<std::size_t>(length));
    if (process.exe.ends_with(kDeleted)) process.exe.resize(process.exe.size() - kDeleted.size());
}

// None when the process has ended.
std::optional<Process> readProcess(const Root& root, int pid, const std::string& path) {
    const kest::Descriptor directory = root.open(path, O_DIRECTORY);
    struct stat status {};
    if (!directory.isOpen() || ::fstat(directory.number(), &status) != 0) return std::nullopt;
    Process process;
    process.pid = pid;
    process.uid = status.st_uid;
    process.comm = trimmed(readStart(directory.number(), "comm", 64));
    if (process.comm.empty()) return std::nullopt;
    readExe(directory.number(), process);
    process.args = argumentsWithoutSecrets(readStart(directory.number(), "cmdline", kMaxArgumentBytes));
    // A process without arguments is a kernel thread or has ended. It has no program.
    if (process.args.empty()) process.exeDenied = false;
    return process;
}

}  // namespace

std::string_view Process::name() const {
    if (exe.empty()) return comm;
    return std::string_view(exe).substr(exe.rfind('/') + 1);
}

const std::vector<Process>& Processes::processes() {
    if (!std::exchange(isRead_, true)) readWithinLimits();
    return processes_;
}

void Processes::readWithinLimits() {
    try {
        read();
    } catch (const BudgetExceeded& over) {
        note(over.code, "/proc", "not all processes were looked at: " + over.text);
    } catch (const std::bad_alloc&) {
        processes_ = {};
        note(EventCode::LimitMemory, "/proc", "the processes take more memory than is allowed");
    }
}

void Processes::read() {
    if (!settings_.enabled) {
        note(EventCode::Config, {}, "processes are not looked at: the configuration forbids it");
        return;
    }
    if (!root_.live()) {
        note(EventCode::Unsupported, {}, "processes are not looked at below a root");
        return;
    }
    const std::map<std::uint32_t, std::string> names = userNames(root_);
    std::size_t held = 0;
    for (const std::string& entry : root_.list("/proc")) {
        int pid = 0;
        const auto [end, error] = std::from_chars(entry.data(), entry.data() + entry.size(), pid);
        if (error != std::errc() || end != entry.data() + entry.size()) continue;
        std::optional<Process> process = readProcess(root_, pid, "/proc/" + entry);
        if (!process) continue;
        const auto name = names.find(process->uid);
        process->user = name == names.end() ? std::to_string(process->uid) : name->second;
        held += process->args.size() + process->exe.size() + sizeof *process;
        processes_.push_back(std::move(*process));
        budget_.checkTimeOccasionally();
        if (held > kMaxBytes)
            throw BudgetExceeded(EventCode::LimitBytes, "there is too much to know of them");
    }
    std::ranges::sort(processes_, {}, &Process::pid);
    // A mount option of /proc hides the processes of other users, process 1 among them.
    if (processes_.empty() || processes_.front().pid != 1)
        note(EventCode::Permission, "/proc", "the processes of other users are hidden");
}

void Processes::note(EventCode code, std::string path, std::string text) {
    events_.push_back({code, std::move(path), std::move(text), {}, {}});
}

}  // namespace toolkit::quorvis
