// The reason of a failure is printed to standard error in every locale.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

class FailureReasonsTest : public testing::Test {
  protected:
    // Runs the command in several locales, one of them not installed, and expects the texts in this order each time.
    void expectReported(const Process& process, const std::vector<std::string>& texts) const {
        for (const char* const locale : {"C", "POSIX", "ru_RU.KOI8-R", "C.UTF-8"}) {
            const Ended ended = Process(process)
                                    .environment("LC_ALL", locale)
                                    .environment("LC_CTYPE", std::nullopt)
                                    .environment("LANG", std::nullopt)
                                    .run();
            EXPECT_EQ(1, ended.status) << locale;
            std::size_t at = 0;
            for (const std::string& text : texts) {
                at = ended.err.find(text, at);
                EXPECT_NE(std::string::npos, at) << locale << ": " << text << " is missing in\n" << ended.err;
                if (at == std::string::npos) break;
            }
        }
    }
    Process hw(const std::string& toolkit) const { return Process({"hw", "--toolkit", toolkit}); }
    Process sw(const std::string& toolkit) const {
        return Process({"sw", "--toolkit", toolkit, signatures_});
    }
    std::string write(const std::string& name, const std::string& text) const {
        return scratch_.write(name, text).string();
    }
    // A toolkit of programs that cannot be started, in a directory whose name is not ASCII.
    std::string broken() const {
        for (const char* const name : {"quorvah", "quorvis"}) {
            const auto program =
                scratch_.write(std::string("gr\xC3\xB6\xC3\x9F/") + name, "#!/no/such/program\n");
            std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        }
        return (scratch_.path() / "gr\xC3\xB6\xC3\x9F").string();
    }

    ScratchDir scratch_;
    std::string signatures_ = write("s.xml", "<Signatures><Signature guid=\"g\" name=\"G\"/></Signatures>");
};

TEST_F(FailureReasonsTest, ProgramThatCannotBeStartedIsReportedWithPathAndError) {
    const std::string toolkit = broken();
    for (const auto& [process, program] :
         {std::pair{hw(toolkit), "/quorvah\""}, std::pair{sw(toolkit), "/quorvis\""}})
        expectReported(process, {"Cannot start \"", program, "ENOENT (no such file or directory)",
                                 "Execution of command failed.."});
}

TEST_F(FailureReasonsTest, FailedScannerIsReportedWithItsStatus) {
    expectReported(hw(scanner("fails")), {"Exit code: 3 (ERROR)"});
}

TEST_F(FailureReasonsTest, InvalidInventoryIsReportedWithFileAndLine) {
    const auto prepared = [&](const std::string& text) {
        return hw(scanner("copies")).environment("ZAVTEST_OUTPUT", write("prepared.xml", text));
    };
    expectReported(prepared("<Q>\n<Processor> </Processor></Q>"),
                   {"[/", "/out_", "], line 2: a field is expected"});
    expectReported(prepared("<Q>\n\n<N\xC3\xB6/></Q>"),
                   {"[/", "/out_", "], line 3: no group has the name \"N\\xC3\\xB6\""});
    expectReported(prepared("<Q>\n<b></Q>"),
                   {"Error in line 2: /", "/out_", ": mismatched tag, the end of \"b\""});
    expectReported(prepared(""), {"Error in line 1: /", "/out_", ": no element found"});
}

TEST_F(FailureReasonsTest, InvalidResultsAndWarningsAreReportedWithFileAndLine) {
    const std::string cut = write("cut.xml", "<M>\n<\xC3\xB6></M>");
    const std::string reason = ": mismatched tag, the end of \"\\xC3\\xB6\" is expected";
    expectReported(sw(scanner("answers")).environment("ZAVTEST_OUTPUT", cut),
                   {"Error in line 2: /", "/out_", reason});
    expectReported(sw(scanner("answers")).environment("ZAVTEST_WARNINGS", cut),
                   {"Error in line 2: /", "/warning_", reason});
}

TEST_F(FailureReasonsTest, FailedWriteIsReportedWithFileAndError) {
    const Process process = Process({"-c", "ulimit -f 0; exec \"$0\" \"$@\"", ZAVTEST_COMMAND, "sw",
                                     "--toolkit", scanner("answers"), signatures_})
                                .program("/bin/sh");
    expectReported(process, {"Error during write [/", "Cannot write [/", "EFBIG (file too large)"});
}

TEST_F(FailureReasonsTest, MissingTemporaryDirectoryIsReportedWithPathAndError) {
    expectReported(hw(scanner("fails")).environment("TEMP", "/no/such/gr\xC3\xB6\xC3\x9F"),
                   {"/no/such/gr\xC3\xB6\xC3\x9F/zav-", ": No such file or directory"});
}

}  // namespace
}  // namespace zavtest
