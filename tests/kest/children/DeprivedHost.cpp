// A host that has closed some of its standard streams: DeprivedHost <streams> <SIGCHLD> <program> <result>.
// Closes those of the descriptors 0, 1 and 2 that <streams> holds, ignores SIGCHLD when that is "ignored",
// runs the program in several threads at once, and writes the different outputs, each followed by the status,
// to the file <result>.
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "kest/Runtime.h"
#include "kest/Text.h"
#include "tests/kest/Threads.h"

namespace {

std::string outcomeOf(const std::string& program) {
    const kest::String command(kest::widen("\"" + program + "\""));
    const std::unique_ptr<kest::ChildProcess> child(kest::Runtime().launch(command, nullptr));
    if (child == nullptr) return "not started\n";
    std::string outcome;
    for (int byte = 0; (byte = child->getOutputStream()->read()) >= 0;) outcome += static_cast<char>(byte);
    return outcome + "status " + std::to_string(child->waitFor()) + "\n";
}

std::set<std::string> outcomesOfThreads(const std::string& program) {
    std::set<std::string> outcomes;
    std::mutex mutex;
    kest::test::inThreads(4, [&](int) {
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
    for (const std::string& outcome : outcomesOfThreads(arguments[3])) result << outcome;
    result.close();
    return result ? 0 : 1;
}
