// What the tests of the groups have in common.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/Report.h"
#include "toolkit/quorvah/sources/Scan.h"

namespace toolkit::quorvah {

// The sorted report of one group.
inline Report gathered(std::string_view group, const Options& options) {
    Scan scan(options);
    const Group* const found = findGroup(group);
    if (found == nullptr || found->gather == nullptr) {
        ADD_FAILURE() << group << " is not gathered";
        return Report(kScanInfo);
    }
    Report report(*found);
    found->gather(scan, report);
    report.sort();
    return report;
}

inline Report gatheredLive(std::string_view group) {
    return gathered(group, {});
}

// From a tree; names come from the small databases that lie beside the trees.
inline Report gatheredBelow(std::string_view group, const std::string& directory) {
    Options options;
    options.root = directory;
    options.ids = QUORVAH_TEST_TREES "/ids";
    return gathered(group, options);
}

// The instance with that key; a failed test and an empty instance when there is none.
inline const Instance& instanceOf(const Report& report, std::string_view key) {
    for (const Instance& instance : report.instances()) {
        if (instance.values().front() == key) return instance;
    }
    ADD_FAILURE() << "no instance " << key;
    static Report none(report.group());
    return none.instances().empty() ? none.add() : none.instances().front();
}

// All values, "|" between them: what a whole instance looks like.
inline std::string joined(const Instance& instance) {
    std::string text;
    for (const std::string_view value : instance.values()) {
        text += value;
        text += '|';
    }
    return text;
}

inline std::vector<std::string> keysOf(const Report& report) {
    std::vector<std::string> keys;
    for (const Instance& instance : report.instances()) keys.emplace_back(instance.values().front());
    return keys;
}

// The lines that a shell command writes; a failed test when it does not end well.
inline std::vector<std::string> linesOf(const std::string& command) {
    std::string output;
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << command;
        return {};
    }
    std::array<char, 4096> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe)) {
        output.append(block.data(), count);
    }
    EXPECT_EQ(0, pclose(pipe)) << command;
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end = output.find('\n'); end != std::string::npos; end = output.find('\n', begin)) {
        lines.push_back(output.substr(begin, end - begin));
        begin = end + 1;
    }
    if (begin < output.size()) lines.push_back(output.substr(begin));
    return lines;
}

inline std::vector<std::string> fieldsOf(const std::string& line, char separator = '\t') {
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c == separator) {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

// A tree of files that lives as long as the object.
class Tree {
  public:
    Tree() {
        std::string name = std::filesystem::temp_directory_path() / "quorvah_tree_XXXXXX";
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp");
        folder_ = name;
    }
    ~Tree() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    // `path` without the slash at its front.
    void put(const std::string& path, std::string_view content) const {
        std::filesystem::create_directories((folder_ / path).parent_path());
        std::ofstream(folder_ / path, std::ios::binary) << content;
    }
    void link(const std::string& path, const std::string& target) const {
        std::filesystem::create_directories((folder_ / path).parent_path());
        std::filesystem::create_symlink(target, folder_ / path);
    }
    std::string path() const { return folder_.string(); }

  private:
    std::filesystem::path folder_;
};

}  // namespace toolkit::quorvah
