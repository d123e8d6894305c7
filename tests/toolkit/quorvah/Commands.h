// What other programs tell of this machine, for tests that compare the scanner with them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "toolkit/quorvah/report/GroupData.h"

namespace toolkit::quorvah {

using Rows = std::vector<std::string>;

// The lines that a shell command prints. The test fails if the command does.
inline Rows linesOf(const std::string& command) {
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
    Rows lines;
    std::size_t begin = 0;
    for (std::size_t end = output.find('\n'); end != std::string::npos; end = output.find('\n', begin)) {
        lines.push_back(output.substr(begin, end - begin));
        begin = end + 1;
    }
    if (begin < output.size()) lines.push_back(output.substr(begin));
    return lines;
}

// The first line that a shell command prints.
inline std::string lineOf(const std::string& command) {
    const Rows lines = linesOf(command);
    return lines.empty() ? std::string() : lines.front();
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

inline Rows sorted(Rows rows) {
    std::sort(rows.begin(), rows.end());
    return rows;
}

// The named fields of every instance, separated by tabs, one row per instance, sorted.
inline Rows rowsOf(const GroupData& data, const std::vector<std::string>& fields) {
    Rows rows;
    for (const Instance& instance : data.instances()) {
        std::string row;
        for (const std::string& field : fields) row += (row.empty() ? "" : "\t") + instance.get(field);
        rows.push_back(row);
    }
    return sorted(rows);
}

// Compares a field with the value of another program, if it has one.
inline void expectKnown(const Instance& instance, const std::string& field, const std::string& theirs) {
    if (theirs.empty()) return;
    EXPECT_EQ(instance.get(field), theirs) << field << " of " << instance.values().front();
}

// Removes from `text` everything up to the end of `after` and returns what is between `before` and `after`.
// Empties `text` if they do not follow each other in it.
inline std::string takeBetween(std::string& text, const std::string& before, const std::string& after) {
    const std::size_t begin = text.find(before);
    const std::size_t end = begin == std::string::npos ? begin : text.find(after, begin + before.size());
    if (end == std::string::npos) {
        text.clear();
        return {};
    }
    std::string found = text.substr(begin + before.size(), end - begin - before.size());
    text.erase(0, end + after.size());
    return found;
}

// The pairs of a line NAME="value" NAME="value".
inline std::map<std::string, std::string> pairsOf(std::string line) {
    std::map<std::string, std::string> pairs;
    while (!line.empty()) {
        const std::string name = takeBetween(line, "", "=\"");
        pairs[name] = takeBetween(line, "", "\"");
        if (line.starts_with(' ')) line.erase(0, 1);
    }
    return pairs;
}

// The fields of "lscpu -J", whose names end with a colon.
inline std::map<std::string, std::string> lscpuFields() {
    std::string text;
    for (const std::string& line : linesOf("LC_ALL=C lscpu -J")) text += line + "\n";
    std::map<std::string, std::string> fields;
    for (;;) {
        const std::string name = takeBetween(text, "\"field\": \"", ":\"");
        if (text.empty()) return fields;
        fields.emplace(name, takeBetween(text, "\"data\": \"", "\""));
    }
}

}  // namespace toolkit::quorvah