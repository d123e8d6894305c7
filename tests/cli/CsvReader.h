#pragma once

#include <string>
#include <vector>

namespace zavtest {

using CsvRecord = std::vector<std::string>;

// The records of a text that strictly follows RFC 4180; empty for any other text.
inline std::vector<CsvRecord> readCsv(const std::string& text) {
    std::vector<CsvRecord> records;
    CsvRecord record;
    std::size_t i = 0;
    while (i < text.size()) {
        std::string field;
        if (text[i] == '"') {
            for (++i; i < text.size() && (text[i] != '"' || text.compare(i, 2, "\"\"") == 0); ++i) {
                if (text[i] == '"') ++i;
                field += text[i];
            }
            ++i;
        } else {
            while (i < text.size() && text[i] != ',' && text[i] != '\r') {
                if (text[i] == '"' || text[i] == '\n') return {};
                field += text[i++];
            }
        }
        record.push_back(field);
        if (i < text.size() && text[i] == ',') {
            ++i;
        } else if (text.compare(i, 2, "\r\n") == 0) {
            records.push_back(record);
            record.clear();
            i += 2;
        } else {
            return {};
        }
    }
    return records;
}

}  // namespace zavtest
