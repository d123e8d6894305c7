// The shared library as seen by the system's tools.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

struct ClosePipe {
    void operator()(std::FILE* pipe) const { status = pclose(pipe); }
    static inline int status = -1;
};

// The lines that a program prints. The program must succeed.
Lines linesOf(const std::string& command) {
    Lines lines;
    {
        const std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
        char line[4096];
        while (std::fgets(line, sizeof line, pipe.get()) != nullptr) {
            lines.emplace_back(line);
            if (lines.back().back() == '\n') lines.back().pop_back();
        }
    }
    EXPECT_EQ(ClosePipe::status, 0) << command;
    return lines;
}

// The last word of each line that contains a text.
std::set<std::string> lastWordsOf(const Lines& lines, const std::string& text) {
    std::set<std::string> words;
    for (const std::string& line : lines) {
        if (line.find(text) != std::string::npos) words.insert(line.substr(line.rfind(' ') + 1));
    }
    return words;
}

// The functions in the version script.
std::set<std::string> namesInMap() {
    std::set<std::string> names;
    std::ifstream map(ZAV_MAP);
    for (std::string word; map >> word;) {
        if (word.starts_with("ZAV_") && word.ends_with(";")) names.insert(word.substr(0, word.size() - 1));
    }
    return names;
}

std::set<std::string> functions() {
    return {"ZAV_init",
            "ZAV_free",
            "ZAV_hw_init",
            "ZAV_hw_setopt",
            "ZAV_hw_run",
            "ZAV_hw_get_returncode",
            "ZAV_hw_get_group_name",
            "ZAV_hw_get_group_instances",
            "ZAV_hw_get_fields",
            "ZAV_hw_get_value",
            "ZAV_hw_free",
            "ZAV_sw_init",
            "ZAV_sw_setopt_variable",
            "ZAV_sw_setopt_config",
            "ZAV_sw_evaluate",
            "ZAV_sw_evaluate_file",
            "ZAV_sw_evaluate_multi",
            "ZAV_sw_get_results",
            "ZAV_sw_find_result_by_guid",
            "ZAV_sw_find_results_by_guid",
            "ZAV_sw_get_value",
            "ZAV_sw_get_variables",
            "ZAV_sw_get_metadata",
            "ZAV_sw_get_guid",
            "ZAV_sw_get_warnings",
            "ZAV_sw_get_returncode",
            "ZAV_sw_free"};
}

TEST(SharedLibrary, ExportsItsFunctionsUnderOneVersionAndNothingElse) {
    std::set<std::string> expected = {"ZAV_1"};
    for (const std::string& name : functions()) expected.insert(name + "@@ZAV_1");
    EXPECT_EQ(lastWordsOf(linesOf("nm -D --defined-only --with-symbol-versions " ZAV_LIBRARY), ""), expected);
}

TEST(SharedLibrary, TheVersionScriptNamesTheSameFunctions) {
    EXPECT_EQ(namesInMap(), functions());
}

TEST(SharedLibrary, HasItsSoname) {
    EXPECT_EQ(lastWordsOf(linesOf("readelf -d " ZAV_LIBRARY), "(SONAME)"),
              std::set<std::string>{"[libzav.so.1]"});
}

// Expat and the libraries of the compiler.
TEST(SharedLibrary, NeedsExpatAndTheSystemsLibrariesOnly) {
    for (const std::string& needed : lastWordsOf(linesOf("readelf -d " ZAV_LIBRARY), "(NEEDED)")) {
        const bool known = needed.starts_with("[libexpat.") || needed.starts_with("[libstdc++.") ||
                           needed.starts_with("[libgcc_s.") || needed.starts_with("[libc.") ||
                           needed.starts_with("[libm.") || needed.starts_with("[libasan.") ||
                           needed.starts_with("[libubsan.") || needed.starts_with("[libtsan.") ||
                           needed.starts_with("[ld-linux");
        EXPECT_TRUE(known) << needed;
    }
}

TEST(SharedLibrary, HasNoExecutableStackAndNoTextRelocations) {
    for (const std::string& line : linesOf("readelf -lW " ZAV_LIBRARY)) {
        const bool executableStack =
            line.find("GNU_STACK") != std::string::npos && line.find("RWE") != std::string::npos;
        EXPECT_FALSE(executableStack) << line;
    }
    EXPECT_EQ(lastWordsOf(linesOf("readelf -d " ZAV_LIBRARY), "TEXTREL"), std::set<std::string>());
}

}  // namespace
