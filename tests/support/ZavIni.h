// Controls what fopen opens. Use zav_test_opens() of Support.cmake. Without a rule fopen behaves as usual, except
// that /etc/zav/zav.ini does not exist: tests must not depend on the machine's own file.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>

#include "tests/support/ScratchDir.h"

namespace zavtest {

inline constexpr const char* kZavIni = "/etc/zav/zav.ini";

// Controls and counts the calls of fopen for one path. The newest rule of a path applies.
class OpenRule {
  public:
    // Only counts.
    explicit OpenRule(std::string path);
    // Opens another file instead.
    OpenRule(std::string path, const std::filesystem::path& instead);
    // Fails with this error number.
    OpenRule(std::string path, int error);
    ~OpenRule();
    OpenRule(const OpenRule&) = delete;
    OpenRule& operator=(const OpenRule&) = delete;

    int count() const { return count_; }

  private:
    friend struct OpenRules;

    std::string path_;
    std::string instead_;
    int error_;
    std::atomic<int> count_{0};
    OpenRule* older_ = nullptr;
};

// Makes /etc/zav/zav.ini have this content.
class ZavIni {
  public:
    explicit ZavIni(const std::string& content) : rule_(kZavIni, directory_.write("zav.ini", content)) {}

    int opens() const { return rule_.count(); }

  private:
    ScratchDir directory_;
    OpenRule rule_;
};

}  // namespace zavtest
