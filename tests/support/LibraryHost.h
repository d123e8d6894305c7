#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "include/zav.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {

using Messages = std::vector<Message>;
using Texts = std::vector<std::string>;

// A host with a library handle and a log for its context. It checks at its end that no file is left.
class LibraryHost {
  public:
    // `tempName` is the name of the library's temporary directory. Both may hold whatever a path may hold.
    explicit LibraryHost(const std::filesystem::path& toolkit, const std::string& tempName = "temp")
        : temp_(scratch_.path() / tempName) {
        std::filesystem::create_directory(temp_);
        EXPECT_EQ(
            ZAV_init("tests", nullptr, nullptr, temp_.wstring().c_str(), toolkit.wstring().c_str(), &handle_),
            0);
    }
    ~LibraryHost() {
        if (handle_ != nullptr) closeHandle();
    }
    LibraryHost(const LibraryHost&) = delete;
    LibraryHost& operator=(const LibraryHost&) = delete;

    ZAVCtx* handle() const { return handle_; }
    const std::filesystem::path& temp() const { return temp_; }

    // The context's messages since it was made or since the last call.
    Messages takeMessages() { return std::exchange(log_.messages, {}); }
    // The texts of one function's messages among them.
    Texts takeTextsOf(const std::string& function) {
        Texts texts = log_.textsOf(function);
        log_.messages.clear();
        return texts;
    }

  protected:
    void closeHandle() {
        EXPECT_EQ(ZAV_free(std::exchange(handle_, nullptr)), 0);
        EXPECT_TRUE(std::filesystem::is_empty(temp_));
    }

    LogRecorder log_;

  private:
    ScratchDir scratch_;
    std::filesystem::path temp_;
    ZAVCtx* handle_ = nullptr;
};

}  // namespace zavtest
