// What an evaluation opens, observed with inotify.
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <set>

#include "kest/Descriptor.h"
#include "tests/toolkit/quorvis/BinaryFiles.h"
#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

using quorvistest::elfFile;
using quorvistest::goProgram;
using quorvistest::rustProgram;

class Planning : public Evaluation {
  protected:
    void watch(const std::string& path, std::uint32_t what = IN_OPEN) {
        watcher_ = kest::Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        ASSERT_GE(::inotify_add_watch(watcher_.number(), (tree_.path() / path).c_str(), what), 0);
    }

    // How often the watched directory or file itself was opened.
    int times() const {
        int count = 0;
        alignas(inotify_event) std::array<char, 65536> buffer;
        for (;;) {
            const ssize_t size = ::read(watcher_.number(), buffer.data(), buffer.size());
            if (size <= 0) return count;
            for (ssize_t at = 0; at < size;) {
                const auto* const event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
                if (event->len == 0) ++count;
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
    }

  private:
    kest::Descriptor watcher_;
};

TEST_F(Planning, WithoutThePackageTheDirectoriesOfThePatternAreNotOpened) {
    tree_.write("opt/a/x", "");
    watch("opt/a");
    EXPECT_FALSE(matches(R"(<All><Package name="gone"/><Glob pattern="/opt/a/*"/></All>)"));
    EXPECT_EQ(times(), 0);
}

TEST_F(Planning, PatternsAfterATrueBranchAreNotWalked) {
    install("here", "1");
    tree_.write("opt/a/x", "");
    watch("opt/a");
    EXPECT_TRUE(matches(R"(<Any><Package name="here"/><Glob pattern="/opt/a/*"/></Any>)"));
    EXPECT_EQ(times(), 0);
}

TEST_F(Planning, ManyPatternsOpenADirectoryOnce) {
    tree_.write("opt/a/x1", "");
    watch("opt/a");
    std::string signatures;
    for (int i = 0; i < 20; ++i) {
        const std::string number = std::to_string(i);
        signatures += R"(<Signature guid=")" + number + R"(" name="n"><Match><Glob pattern="/opt/**/x)" +
                      number + R"("/></Match></Signature>)";
    }
    EXPECT_EQ(evaluate(signatures).size(), 1U);
    EXPECT_EQ(times(), 1);
}

TEST_F(Planning, ManyRegexesReadAFileOnce) {
    tree_.write("etc/app.conf", "value3\n");
    watch("etc/app.conf", IN_ACCESS);
    std::string signatures;
    for (int i = 0; i < 20; ++i) {
        const std::string number = std::to_string(i);
        signatures += R"(<Signature guid=")" + number +
                      R"(" name="n"><Match><Content path="/etc/app.conf" regex="^value)" + number +
                      R"($" flags="m"/></Match></Signature>)";
    }
    EXPECT_EQ(evaluate(signatures).size(), 1U);
    EXPECT_EQ(times(), 1);
}

TEST_F(Planning, AProgramWithoutComponentsIsOpenedOnceForAllFormats) {
    tree_.write("opt/bin/plain", elfFile(".rodata", "nothing", ""));
    watch("opt/bin/plain");
    const auto signature = [](const std::string& format) {
        return R"(<Signature guid=")" + format +
               R"(" name="n"><Each><Glob id="f" pattern="/opt/bin/*"/></Each>)" +
               R"(<Match><Component path="${f.path}" format=")" + format + R"("/></Match></Signature>)";
    };
    EXPECT_TRUE(evaluate(signature("go") + signature("rust")).empty());
    EXPECT_EQ(times(), 1);
}

TEST_F(Planning, ComponentsOfOneFormatAreFoundAfterThoseOfAnother) {
    tree_.write("opt/bin/crates", rustProgram(R"({"packages":[{"name":"a","version":"1.0","root":true}]})"));
    tree_.write("opt/bin/modules", goProgram("example.org/tool", "v1.2.3"));
    const auto signature = [](const std::string& format) {
        return R"(<Signature guid=")" + format +
               R"(" name="${c.name}"><Each><Glob id="f" pattern="/opt/bin/*"/></Each>)" +
               R"(<Match><Component id="c" path="${f.path}" format=")" + format +
               R"(" role="main"/></Match></Signature>)";
    };
    for (const std::string& signatures :
         {signature("go") + signature("rust"), signature("rust") + signature("go")}) {
        std::set<std::string> names;
        for (const Match& match : evaluate(signatures)) names.insert(match.name);
        EXPECT_EQ(names, (std::set<std::string>{"a", "example.org/tool"}));
    }
}

TEST_F(Planning, ManyRegexesForPackagesAreMatchedTogether) {
    for (const char* const name : {"liba1", "liba2", "libb1", "other"}) install(name, "1");
    given_ = {{"letter", "b", ""}};
    std::string signatures;
    for (const char* const regex : {"^liba", "1$", "lib${letter}", "^x", "(?i)^LIBA", "^lib${p.name}"}) {
        signatures += R"(<Signature guid="g" name="n"><Each><Package id="p" nameRegex=")" +
                      std::string(regex) + R"("/></Each><Output><Variable name="p" value="${p.name}"/>)" +
                      "</Output></Signature>";
    }
    std::vector<std::string> names;
    for (const Match& match : evaluate(signatures)) names.push_back(match.variables.at(0).second);
    EXPECT_EQ(names,
              (std::vector<std::string>{"liba1", "liba2", "liba1", "libb1", "libb1", "liba1", "liba2"}));
    const auto together = [this](const char* regex) {
        return context_->packages().announced(regex) != nullptr;
    };
    EXPECT_TRUE(together("^liba") && together("1$") && together("libb") && together("^x"));
    // Needs its own compilation, or is not announced in time.
    EXPECT_FALSE(together("(?i)^LIBA") || together("^lib${p.name}"));
}

}  // namespace
}  // namespace toolkit::quorvis
