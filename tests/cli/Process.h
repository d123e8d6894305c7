// Runs the command as a whole process, as a shell does.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zavtest {

struct Ended {
    int status = -1;  // exit status
    int signal = 0;   // the signal that ended it; 0 if none
    std::string out;
    std::string err;
};

class Process {
  public:
    // The command zav of this build with these arguments.
    explicit Process(std::vector<std::string> arguments);

    Process& program(const std::string& path);
    // Sets or removes an environment variable.
    Process& environment(const std::string& name, const std::optional<std::string>& value);
    Process& directory(const std::string& path);
    // Makes standard error or standard output a terminal of that many columns.
    Process& errorTerminal(int columns);
    Process& outputTerminal(int columns);
    // Redirects standard output or standard error to a file.
    Process& outputTo(const std::string& path);
    Process& errorTo(const std::string& path);
    // Closes the reading end of the pipe at this descriptor, which is 1 or 2.
    Process& unread(int descriptor);
    // Starts the process with this signal ignored.
    Process& ignoring(int signal);
    // Starts the process with these descriptors closed.
    Process& without(std::vector<int> descriptors);
    // Replaces /etc by a directory that contains only the account of root and, if there is any content, zav/zav.ini with it.
    Process& locationFile(const std::optional<std::string>& zavIni);
    // Sets the owner and the mode of that zav.ini.
    Process& locationFileOwner(unsigned int user, unsigned int mode);
    // Starts the process as this user. REQUIRES: the tests run as root.
    Process& user(unsigned int id);
    // Calls the watcher after each piece of output, with all of standard error so far and the process id, which is also the
    // process group id.
    Process& watch(std::function<void(const std::string& err, int pid)> watcher);

    Ended run();

  private:
    [[noreturn]] void become(int out, int err) const;
    void enterOwnEtc() const;

    std::string program_;
    std::vector<std::string> arguments_;
    std::vector<std::pair<std::string, std::optional<std::string>>> environment_;
    std::string directory_;
    int errorColumns_ = 0;
    int outputColumns_ = 0;
    std::string outputFile_;
    std::string errorFile_;
    std::vector<int> closed_;
    std::vector<int> ignored_;
    int unread_ = -1;
    bool ownEtc_ = false;
    std::optional<std::string> zavIni_;
    unsigned int iniUser_ = 0;
    unsigned int iniMode_ = 0644;
    std::optional<unsigned int> user_;
    std::function<void(const std::string&, int)> watcher_;
};

}  // namespace zavtest
