#pragma once

#include <list>
#include <string>

#include "core/File.h"
#include "core/ZAVlog.h"

namespace zav {

// A private directory for the files that go to and from a scanner. It hands out names of files that do not
// exist yet and remembers them, so that all can be deleted; it never makes a file itself. Not for use by two
// threads at once.
class TemporaryDir {
  public:
    // Works below basePath; null for the system's temporary directory. log may be null. REQUIRES: log
    // outlives this.
    TemporaryDir(ZAVlog* log, const wchar_t* basePath);
    // Workspaces that cannot be initialised.
    explicit TemporaryDir(const wchar_t* basePath);
    explicit TemporaryDir(ZAVlog* log);
    TemporaryDir();
    // As close().
    ~TemporaryDir();
    TemporaryDir(const TemporaryDir&) = delete;
    TemporaryDir& operator=(const TemporaryDir&) = delete;

    // Makes the directory, for the owner alone. 0, or 6 when none could be made.
    int init(const wchar_t* prefix);

    // A name that is free: 0, or 6 with `path` unchanged (not initialised, or no free name). prefix and
    // extension may be null; a number stands behind the extension.
    int getTmpFile(std::wstring& path, const wchar_t* prefix, const wchar_t* extension);

    // Deletes every file whose name was handed out and forgets them: 0, or 6 when not initialised. Needs no
    // memory.
    int deleteFiles(bool unused);

    // Removes the workspace's directory if it is empty, whatever is named.
    void deleteDirectory(std::wstring unused);

    // Ends the workspace: deletes the remembered files, and the directory unless somebody else's files are in
    // it. 0, or 5 when the log's callback threw, which stops nothing.
    int close();

    // Logs nothing from now on.
    void silence() { log_ = &orSilent(nullptr); }

    // Why the last init() or getTmpFile() failed, in printable ASCII.
    std::string trouble() const;

    // The workspace's directory, valid as long as the workspace; null when not initialised.
    const wchar_t* getBasePath() const { return initialized_ ? dirPathText_ : nullptr; }
    // The directory in which the workspace was to be made.
    const std::wstring& parentPath() const { return basePath_; }

    unsigned int getRand();
    std::wstring getRandomName(const wchar_t* prefix, const wchar_t* suffix, int count);
    std::wstring getSystemTempPath() const;
    std::wstring getDirectorySeparator() const { return L"/"; }
    void normalizeDir(std::wstring& dir) const;
    std::string WStringToString(const std::wstring& wide) const;
    std::wstring StringToWString(const std::string& bytes) const;

  private:
    std::wstring candidate(const std::wstring& directory, const wchar_t* prefix, const wchar_t* suffix,
                           int number);
    bool makeDirectory();

    // The names are kept as the system takes them, so that deleting cannot run out of memory.
    std::list<std::string> files_;
    std::wstring basePath_;
    std::wstring dirPath_;
    std::string dirName_;
    int error_ = 0;  // of the last directory that could not be made
    bool initialized_ = false;
    bool closed_ = false;
    const wchar_t* dirPathText_ = nullptr;
    ZAVlog* log_ = &orSilent(nullptr);
    File randomSource_;
};

}  // namespace zav
