#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "include/zav.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/NothingLeft.h"
#include "tests/support/ScratchDir.h"

namespace swtest {

using Messages = std::vector<zavtest::Message>;
using Texts = std::vector<std::string>;
using WideTexts = std::vector<std::wstring>;
// Name and value of each variable.
using Variables = std::vector<std::pair<std::wstring, std::wstring>>;

// A toolkit's directory with a scanner of the test's choice.
class Toolkit {
  public:
    // The directory's name may be anything that a path may hold.
    explicit Toolkit(const std::string& name = "toolkit");

    // The scanner is one of the programs in scanners/.
    void scannerIs(const std::string& program) const;
    // The scanner writes this and ends well.
    void scannerWrites(const std::string& output, const std::string& warnings = "<Events/>") const;
    // Puts a file beside the scanner; the programs in scanners/ say what they look for.
    std::filesystem::path put(const std::string& name, const std::string& content) const;
    void remove(const std::string& name) const { std::filesystem::remove(path_ / name); }
    // What a file beside the scanner holds.
    std::string read(const std::string& name) const { return zavtest::readAll(path_ / name); }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path scanner() const { return path_ / "quorvis"; }

  private:
    zavtest::ScratchDir directory_;
    std::filesystem::path path_;
};

// A host with a library handle, a software context and a scanner of its own. It checks at its end that no
// file is left.
//     scannerWrites("<QEL><MatchedSignature guid='1'/></QEL>");
//     ASSERT_EQ(run(), 0);
//     EXPECT_EQ(guids(), WideTexts{L"1"});
class Evaluation : public Toolkit {
  public:
    // The name of the directory for temporary files may be anything that a path may hold, too.
    explicit Evaluation(const std::string& toolkitName = "toolkit", const std::string& tempName = "temp");
    ~Evaluation();
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;

    ZAVCtx* handle() const { return handle_; }
    ZAVSwCtx* context() const { return context_; }
    std::filesystem::path temp() const { return scratch_.path() / tempName_; }

    int run() const { return ZAV_sw_evaluate(context_, L"<Signature/>"); }

    // Each is a failed check, and has an empty result, when the library refuses.
    int returnCode() const;
    std::vector<ZAVSwResult*> results() const;
    WideTexts guids() const;
    std::wstring metadata(ZAVSwResult* result) const;
    Variables variables(ZAVSwResult* result) const;
    WideTexts warnings() const;
    // Null when there is none.
    ZAVSwResult* find(const wchar_t* guid) const;

    // What the context told the host since it was made, or since the last call.
    Messages takeMessages();
    // The texts of one function's messages among them.
    Texts takeTextsOf(const std::string& function);
    // The lines that the scanner printed among them.
    Texts takePrinted();

    // Both are released; no other call may follow.
    void close();

  private:
    zavtest::ScratchDir scratch_;
    std::string tempName_;
    zavtest::LogRecorder log_;
    ZAVCtx* handle_ = nullptr;
    ZAVSwCtx* context_ = nullptr;
};

// A test on an evaluation that leaves nothing behind: no file, no descriptor, no child.
class EvaluationTest : public testing::Test, private zavtest::NothingLeft, protected Evaluation {};

}  // namespace swtest
