// DeprivedHost <streams> <SIGCHLD> <program> <result>: a host that has closed some of its standard streams. It closes
// the descriptors whose digits are in <streams> but continues to write to them, ignores SIGCHLD if <SIGCHLD> is
// "ignored", runs the program in several threads at once, and writes the distinct outputs, each followed by the exit
// status, to the file <result>.
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "kest/Runtime.h"
#include "kest/Text.h"
#include "tests/support/Threads.h"

namespace {

std::string outcomeOf(const std::string& program) {
    const kest::String command(kest::widen("\"" + program + "\""));
    const std::unique_ptr<kest::ChildProcess> child(kest::Runtime().launch(command, nullptr));
    if (child == nullptr) return "not started\n";
    std::string outcome;
    for (int byte = 0; (byte = child->getOutputStream()->read()) >= 0;) outcome += static_cast<char>(byte);
    return outcome + "status " + std::to_string(child->waitFor()) + "\n";
}

// A thread that writes to closed standard streams. None of its writes may succeed.
class StubbornWriter {
  public:
    explicit StubbornWriter(std::string streams) : streams_(std::move(streams)) {}
    StubbornWriter(const StubbornWriter&) = delete;
    StubbornWriter& operator=(const StubbornWriter&) = delete;
    ~StubbornWriter() {
        stop_ = true;
        thread_.join();
    }

    bool wroteSomething() const { return wroteSomething_; }

  private:
    void write() {
        while (!stop_) {
            for (const char stream : streams_) {
                if (::write(stream - '0', "log line\n", 9) > 0) wroteSomething_ = true;
            }
        }
    }

    const std::string streams_;
    std::atomic<bool> stop_ = false;
    std::atomic<bool> wroteSomething_ = false;
    std::thread thread_{[this] { write(); }};
};

std::set<std::string> outcomesOfThreads(const std::string& program) {
    std::set<std::string> outcomes;
    std::mutex mutex;
    zavtest::inThreads(4, [&](int) {
        for (int i = 0; i < 10; ++i) {
            const std::string outcome = outcomeOf(program);
            const std::lock_guard<std::mutex> guard(mutex);
            outcomes.insert(outcome);
        }
    });
    return outcomes;
}

}  // namespace

int main(int, char** arguments) {
    std::ofstream result(arguments[4]);
    for (const char stream : std::string(arguments[1])) close(stream - '0');
    if (std::string(arguments[2]) == "ignored") std::signal(SIGCHLD, SIG_IGN);
    const StubbornWriter writer(arguments[1]);
    for (const std::string& outcome : outcomesOfThreads(arguments[3])) result << outcome;
    if (writer.wroteSomething()) result << "wrote to a closed stream\n";
    result.close();
    return result ? 0 : 1;
}
