#pragma once

#include <list>
#include <string>

#include "core/StdioFile.h"
#include "core/ZAVlog.h"

namespace zav {

// A private directory for the files that are exchanged with a scanner. It returns names of files that do not exist yet
// and records them, so that the files can be deleted; it does not create files itself. Not thread-safe.
class TemporaryDir {
  public:
    // The directory will be made in basePath, or in the system's temporary directory if that is null. log may be null.
    // REQUIRES: log outlives this object.
    TemporaryDir(ZAVlog* log, const wchar_t* basePath);
    // These make an object without a base path, which must not be used.
    explicit TemporaryDir(const wchar_t* basePath);
    explicit TemporaryDir(ZAVlog* log);
    TemporaryDir();
    // Calls close().
    ~TemporaryDir();
    TemporaryDir(const TemporaryDir&) = delete;
    TemporaryDir& operator=(const TemporaryDir&) = delete;

    // Makes the directory with access for its owner only. Returns 0, or 6 when no directory could be made.
    int init(const wchar_t* prefix);

    // Stores the name of a file that does not exist in `path` and returns 0. Returns 6 and leaves `path` unchanged if
    // the directory is not initialised or no name is free. prefix and extension may be null. A number follows the
    // extension.
    int getTmpFile(std::wstring& path, const wchar_t* prefix, const wchar_t* extension);

    // Deletes all recorded files and clears the record. Returns 0, or 6 if not initialised. Allocates no memory.
    int deleteFiles(bool unused);

    // Removes the directory if it is empty. The argument is ignored.
    void deleteDirectory(std::wstring unused);

    // Deletes the recorded files, and the directory unless it contains other files. Returns 0, or 5 when the log's
    // callback threw; an exception does not stop the clean-up.
    int close();

    // Stops logging.
    void silence() { log_ = &orSilent(nullptr); }

    // The reason why the last init() or getTmpFile() failed, in printable ASCII.
    std::string failureReason() const;

    // The path of the directory, valid for the lifetime of this object; null if not initialised.
    const wchar_t* getBasePath() const { return initialized_ ? dirPathText_ : nullptr; }
    // The directory in which init() makes the directory.
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

    // Narrow names, so that deleting the files allocates no memory.
    std::list<std::string> files_;
    std::wstring basePath_;
    std::wstring dirPath_;
    std::string dirName_;
    int error_ = 0;  // error number of the last directory that could not be made
    bool initialized_ = false;
    bool closed_ = false;
    const wchar_t* dirPathText_ = nullptr;
    ZAVlog* log_ = &orSilent(nullptr);
    StdioFile randomSource_;
};

}  // namespace zav
