// Support for the tests of TemporaryDir.
#pragma once

#include <gtest/gtest.h>
#include <regex.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/TemporaryDir.h"
#include "kest/Text.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ZavIni.h"

namespace zav::test {

inline const std::string kInitFunction = "TemporaryDir::init()";
inline const char* const kRandomDevice = "/dev/urandom";
inline const char* const kOtherRandomDevice = "/dev/random";

inline std::wstring wide(const std::filesystem::path& path) {
    return kest::widen(path.string());
}

// Whether the whole text matches an extended regular expression.
inline bool matches(const std::string& text, const std::string& pattern) {
    regex_t compiled;
    if (regcomp(&compiled, ("^(" + pattern + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0) return false;
    const bool matched = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&compiled);
    return matched;
}

// The pattern of every name after its prefix.
inline std::string processIds() {
    return std::to_string(getpid()) + std::to_string(getppid());
}

// The number of names that the next directory or file tries.
inline int seedBudget(unsigned seed) {
    std::srand(seed);
    const int budget = std::rand() % 30 + 30;
    std::srand(seed);
    return budget;
}

// Makes all random characters "0" and gives every name six of them.
class NoRandomness {
    zavtest::OpenRule zeros_{kRandomDevice, "/dev/zero"};
};

// Makes the random device deliver these values and then end.
class RandomValues {
  public:
    explicit RandomValues(const std::vector<std::uint32_t>& values) : rule_(kRandomDevice, write(values)) {}

  private:
    std::filesystem::path write(const std::vector<std::uint32_t>& values) const {
        return directory_.write(
            "random", {reinterpret_cast<const char*>(values.data()), values.size() * sizeof values.front()});
    }

    zavtest::ScratchDir directory_;
    zavtest::OpenRule rule_;
};

// A test whose temporary directories are made in a directory of its own.
class TemporaryDirTest : public testing::Test {
  protected:
    std::unique_ptr<TemporaryDir> make() {
        return std::make_unique<TemporaryDir>(&log_, wide(base_.path()).c_str());
    }
    std::unique_ptr<TemporaryDir> makeInitialised(const wchar_t* prefix = L"zav_") {
        auto workspace = make();
        EXPECT_EQ(workspace->init(prefix), 0);
        recorder_.messages.clear();
        return workspace;
    }
    zavtest::Message message(const std::string& function, const std::string& text) const {
        return {2, 1, function, text};
    }

    zavtest::ScratchDir base_;
    zavtest::LogRecorder recorder_;
    ZAVlog log_{1, zavtest::LogRecorder::callback, &recorder_};
};

}  // namespace zav::test
