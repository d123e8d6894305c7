// What fopen finds. Use zav_test_opens() of Support.cmake. Where no rule says otherwise fopen does what it
// always does, except that there is no /etc/zav/zav.ini: no test sees the machine's own.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>

#include "tests/support/ScratchDir.h"

namespace zavtest {

inline constexpr const char* kZavIni = "/etc/zav/zav.ini";

// What fopen does with one path as long as this lives, and how often it was asked. The youngest rule of a
// path counts.
class OpenRule {
  public:
    // Counts, and opens the file as ever.
    explicit OpenRule(std::string path);
    // Opens another file instead.
    OpenRule(std::string path, const std::filesystem::path& instead);
    // Fails with this errno.
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

// A /etc/zav/zav.ini with this content as long as it lives.
class ZavIni {
  public:
    explicit ZavIni(const std::string& content) : rule_(kZavIni, directory_.write("zav.ini", content)) {}

    int opens() const { return rule_.count(); }

  private:
    ScratchDir directory_;
    OpenRule rule_;
};

}  // namespace zavtest
