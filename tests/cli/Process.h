// Runs the command as a whole process, as a user's shell would.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zavtest {

struct Ended {
    int status = -1;  // exit status
    int signal = 0;   // the signal that ended it, else 0
    std::string out;
    std::string err;
};

class Process {
  public:
    // The built command zav with these arguments.
    explicit Process(std::vector<std::string> arguments);

    Process& program(const std::string& path);
    // Sets a variable, or removes it.
    Process& environment(const std::string& name, const std::optional<std::string>& value);
    Process& directory(const std::string& path);
    // Standard error, or standard output, is a terminal of so many columns.
    Process& errorTerminal(int columns);
    Process& outputTerminal(int columns);
    // Standard output, or standard error, is this file.
    Process& outputTo(const std::string& path);
    Process& errorTo(const std::string& path);
    // Nobody reads what the process writes to this descriptor, 1 or 2.
    Process& unread(int descriptor);
    // The process is started with this signal ignored.
    Process& ignoring(int signal);
    // The process is started without these descriptors.
    Process& without(std::vector<int> descriptors);
    // The process sees an /etc that holds nothing but zav/zav.ini of this content, or nothing at all.
    Process& configuration(const std::optional<std::string>& zavIni);
    // That zav.ini belongs to this user and has this mode.
    Process& configurationOwner(unsigned int user, unsigned int mode);
    // Root starts the process as this user.
    Process& user(unsigned int id);
    // Called again and again with what standard error has brought so far and the process id, which is that of
    // its process group too.
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
