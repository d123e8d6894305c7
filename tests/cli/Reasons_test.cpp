// Why something failed reaches standard error in every locale.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

class ReasonsTest : public testing::Test {
  protected:
    // Runs the command in locales that are not of UTF-8, or not there; each time the texts are told in this order.
    void expectTold(const Process& process, const std::vector<std::string>& texts) const {
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
    // A toolkit in a directory whose name is not ASCII, of programs that nothing can start.
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

TEST_F(ReasonsTest, ProgramThatCannotBeStartedIsToldWithItsPathAndTheError) {
    const std::string toolkit = broken();
    for (const auto& [process, program] :
         {std::pair{hw(toolkit), "/quorvah\""}, std::pair{sw(toolkit), "/quorvis\""}})
        expectTold(process, {"Cannot start \"", program, "ENOENT (no such file or directory)",
                             "Execution of command failed.."});
}

TEST_F(ReasonsTest, ScannerThatFailedIsToldWithItsStatus) {
    expectTold(hw(scanner("fails")), {"Exit code: 3 (ERROR)"});
}

TEST_F(ReasonsTest, RefusedInventoryIsToldWithItsFileAndLine) {
    const auto prepared = [&](const std::string& text) {
        return hw(scanner("copies")).environment("ZAVTEST_OUTPUT", write("prepared.xml", text));
    };
    expectTold(prepared("<Q>\n<Processor> </Processor></Q>"),
               {"[/", "/out_", "], line 2: a field is expected"});
    expectTold(prepared("<Q>\n\n<N\xC3\xB6/></Q>"),
               {"[/", "/out_", "], line 3: no group has the name \"N\\xC3\\xB6\""});
    expectTold(prepared("<Q>\n<b></Q>"),
               {"Error in line 2: /", "/out_", ": mismatched tag, the end of \"b\""});
    expectTold(prepared(""), {"Error in line 1: /", "/out_", ": no element found"});
}

TEST_F(ReasonsTest, RefusedResultsAndWarningsAreToldWithTheirFileAndLine) {
    const std::string cut = write("cut.xml", "<M>\n<\xC3\xB6></M>");
    const std::string reason = ": mismatched tag, the end of \"\\xC3\\xB6\" is expected";
    expectTold(sw(scanner("answers")).environment("ZAVTEST_OUTPUT", cut),
               {"Error in line 2: /", "/out_", reason});
    expectTold(sw(scanner("answers")).environment("ZAVTEST_WARNINGS", cut),
               {"Error in line 2: /", "/warning_", reason});
}

TEST_F(ReasonsTest, FailedWriteIsToldWithItsFileAndTheError) {
    const Process process = Process({"-c", "ulimit -f 0; exec \"$0\" \"$@\"", ZAVTEST_COMMAND, "sw",
                                     "--toolkit", scanner("answers"), signatures_})
                                .program("/bin/sh");
    expectTold(process, {"Error during write [/", "Cannot write [/", "EFBIG (file too large)"});
}

TEST_F(ReasonsTest, MissingTemporaryDirectoryIsToldWithItsPathAndTheError) {
    expectTold(hw(scanner("fails")).environment("TEMP", "/no/such/gr\xC3\xB6\xC3\x9F"),
               {"/no/such/gr\xC3\xB6\xC3\x9F/zav-", ": No such file or directory"});
}

}  // namespace
}  // namespace zavtest
