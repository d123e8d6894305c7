#include "fuzz/hostile/Harness.h"

#include <expat.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>

extern char** environ;

namespace hostile {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::uintmax_t kMaxOutputSize = std::uintmax_t{256} << 20;
constexpr std::size_t kMaxMessagesSize = std::size_t{1} << 20;

std::string startOf(const fs::path& file, std::size_t most) {
    std::ifstream stream(file, std::ios::binary);
    std::string text(most, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(most));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

std::string quoted(const std::string& argument) {
    return "'" + argument + "'";
}

pid_t start(const std::string& program, const std::vector<std::string>& arguments, const fs::path& messages) {
    std::vector<char*> texts;
    texts.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
    texts.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, 1, messages.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t process = -1;
    if (::posix_spawn(&process, program.c_str(), &actions, nullptr, texts.data(), environ) != 0) process = -1;
    ::posix_spawn_file_actions_destroy(&actions);
    return process;
}

bool parses(const fs::path& file, std::string& problem) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> block(std::size_t{1} << 20);
    for (bool more = true; more;) {
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        more = !stream.eof() && stream.gcount() > 0;
        const auto size = static_cast<int>(stream.gcount());
        if (XML_Parse(parser.get(), block.data(), size, more ? 0 : 1) == XML_STATUS_OK) continue;
        problem = std::string(XML_ErrorString(XML_GetErrorCode(parser.get()))) + " at byte " +
                  std::to_string(XML_GetCurrentByteIndex(parser.get()));
        return false;
    }
    return true;
}

// Whether a file contains a text.
bool holds(const fs::path& file, const std::string& text) {
    std::ifstream stream(file, std::ios::binary);
    const std::string all{std::istreambuf_iterator<char>(stream), {}};
    return all.find(text) != std::string::npos;
}

void empty(const fs::path& directory) {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
    fs::create_directories(directory);
}

// An exception of the case generator is a problem of the case, so that its seed is printed.
Problem runCase(const Case& runOne, Random& random, const fs::path& place, std::string& command) {
    try {
        return runOne(random, place, command);
    } catch (const std::exception& fault) {
        return std::string("the case could not be set up: ") + fault.what();
    }
}

}  // namespace

Run run(const std::string& program, const std::vector<std::string>& arguments, const fs::path& directory,
        std::chrono::seconds maxTime) {
    const std::string reports = "log_path=" + (directory / "sanitizer").string();
    ::setenv("ASAN_OPTIONS", (reports + ":detect_leaks=0:hard_rss_limit_mb=3000:handle_sigbus=1").c_str(), 1);
    ::setenv("UBSAN_OPTIONS", (reports + ":print_stacktrace=1").c_str(), 1);

    Run run;
    run.command = quoted(program);
    for (const std::string& argument : arguments) run.command += " " + quoted(argument);
    const Clock::time_point begin = Clock::now();
    const pid_t process = start(program, arguments, directory / "messages");
    int status = 0;
    pid_t ended = 0;
    while (process > 0 && (ended = ::waitpid(process, &status, WNOHANG)) == 0 &&
           Clock::now() < begin + maxTime)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    run.time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    run.ended = ended == process && process > 0;
    if (!run.ended && process > 0) {
        ::kill(process, SIGKILL);
        ::waitpid(process, &status, 0);
    } else if (WIFEXITED(status)) {
        run.status = WEXITSTATUS(status);
    }
    run.messages = startOf(directory / "messages", kMaxMessagesSize);
    return run;
}

Problem checkRun(const Run& run, const std::vector<int>& statuses, const fs::path& directory) {
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        if (entry.path().filename().string().starts_with("sanitizer"))
            return "a report of a sanitizer:\n" + startOf(entry.path(), 4096);
    }
    if (!run.ended) return "it did not end within " + std::to_string(run.time.count()) + " ms";
    if (std::ranges::find(statuses, run.status) == statuses.end())
        return "exit status " + std::to_string(run.status) + "\n" + run.messages.substr(0, 2000);
    return {};
}

Problem checkOutput(const fs::path& file, const std::string& canary) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    if (error) return file.filename().string() + " is missing";
    if (size > kMaxOutputSize) return file.filename().string() + " has " + std::to_string(size) + " bytes";
    std::string problem;
    if (!parses(file, problem)) return file.filename().string() + " is not well-formed: " + problem;
    if (holds(file, canary)) return file.filename().string() + " contains content from outside the root";
    return {};
}

int runCases(int argumentCount, char** arguments, const Case& runOne) {
    if (argumentCount != 5) {
        std::fprintf(stderr, "Usage: %s ITERATIONS SECONDS SEED DIRECTORY\n", arguments[0]);
        return 2;
    }
    const unsigned long long iterations = std::strtoull(arguments[1], nullptr, 10);
    const Clock::time_point end =
        Clock::now() + std::chrono::seconds(std::strtoull(arguments[2], nullptr, 10));
    const std::uint64_t seed = std::strtoull(arguments[3], nullptr, 10);
    const fs::path directory = fs::absolute(arguments[4]);
    unsigned long long count = 0;
    int failures = 0;
    for (; count < iterations && Clock::now() < end; ++count) {
        const fs::path place = directory / ("case-" + std::to_string(seed + count));
        empty(place);
        Random random(seed + count);
        std::string command;
        const Problem problem = runCase(runOne, random, place, command);
        if (problem.empty()) {
            std::error_code ignored;
            fs::remove_all(place, ignored);
            continue;
        }
        ++failures;
        std::printf("FAILED with seed %llu, kept in %s: %s\n  %s\n",
                    static_cast<unsigned long long>(seed + count), place.c_str(), problem.c_str(),
                    command.c_str());
    }
    std::printf("%s: %llu cases from seed %llu on, %d failed\n", fs::path(arguments[0]).filename().c_str(),
                count, static_cast<unsigned long long>(seed), failures);
    return failures == 0 ? 0 : 1;
}

}  // namespace hostile
