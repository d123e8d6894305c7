#pragma once

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace zavtest {

// A temporary directory for a test, deleted with its content at the end.
class ScratchDir {
  public:
    ScratchDir() {
        std::string name = (std::filesystem::temp_directory_path() / "zavtest_XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp");
        path_ = name;
    }
    ~ScratchDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Writes a file in the directory and returns its path.
    std::filesystem::path write(const std::string& name, const std::string& content) const {
        const auto file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream stream(file, std::ios::binary);
        stream << content << std::flush;
        // The test would fail later, and not tell why.
        if (!stream && errno == ENOSPC) throw std::runtime_error("the disk is full: " + file.string());
        return file;
    }

    // Makes a symbolic link below the directory.
    void link(const std::string& name, const std::filesystem::path& target) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::filesystem::create_symlink(target, path_ / name);
    }

  private:
    std::filesystem::path path_;
};

inline std::string readAll(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

}  // namespace zavtest
