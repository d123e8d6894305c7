#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/toolkit/quorvis/ArchiveBuilder.h"

namespace toolkit::quorvis {

// Builds a program for Windows that contains only a version resource.
struct WindowsProgramBuilder {
    bool wide = true;
    std::vector<std::pair<std::string, std::string>> texts = {
        {"CompanyName", "Example \u00a9"}, {"FileVersion", "3.1.4"}, {"ProductName", "Widget"}};

    std::string build() const {
        const std::string version = versionResource();
        constexpr std::size_t kAddress = 0x2000;
        const std::size_t fileAt = 64 + 24 + optionalSize() + 40;

        std::string file = "MZ";
        file.resize(60, '\0');
        file += put(64, 4) + std::string("PE\0\0", 4) + put(0x8664, 2) + put(1, 2) + put(0, 4) + put(0, 4) +
                put(0, 4) + put(optionalSize(), 2) + put(0x22, 2);
        std::string optional = put(wide ? 0x20B : 0x10B, 2);
        optional.resize(wide ? 108 : 92, '\0');
        optional +=
            put(16, 4) + std::string(16, '\0') + put(kAddress, 4) + put(kResourceHead + version.size(), 4);
        optional.resize(optionalSize(), '\0');
        file += optional;
        file += std::string(".rsrc\0\0\0", 8) + put(0x1000, 4) + put(kAddress, 4) +
                put(kResourceHead + version.size(), 4) + put(fileAt, 4) + std::string(16, '\0');
        // A resource of another type precedes the version.
        file += directory(2) + put(3, 4) + put(0x80000000 + 32, 4) + put(16, 4) + put(0x80000000 + 32, 4);
        file += directory(1) + put(1, 4) + put(0x80000000 + 56, 4);
        file += directory(1) + put(1033, 4) + put(80, 4);
        file += put(kAddress + kResourceHead, 4) + put(version.size(), 4) + put(0, 8);
        return file + version;
    }

  private:
    static constexpr std::size_t kResourceHead = 96;

    static std::string put(std::uint64_t value, std::size_t width) { return littleEndianBytes(value, width); }
    std::size_t optionalSize() const { return wide ? 240 : 224; }

    static std::string directory(unsigned entries) {
        return std::string(12, '\0') + put(0, 2) + put(entries, 2);
    }

    // Converts UTF-8 with characters below U+0100 to UTF-16 with a terminating zero.
    static std::string utf16(const std::string& text) {
        std::string units;
        for (std::size_t i = 0; i < text.size(); ++i) {
            auto c = static_cast<unsigned char>(text[i]);
            if (c >= 0xC2) c = static_cast<unsigned char>((c & 3U) << 6U | (text[++i] & 0x3F));
            units += put(c, 2);
        }
        return units + put(0, 2);
    }

    static std::string padded(std::string bytes) {
        bytes.resize((bytes.size() + 3) / 4 * 4, '\0');
        return bytes;
    }

    static std::string block(const std::string& key, std::size_t valueSize, bool isText,
                             const std::string& value, const std::string& children) {
        const std::string body = padded(std::string(6, '\0') + utf16(key)).substr(6);
        const std::string rest = children.empty() ? value : padded(value) + children;
        return put(6 + body.size() + rest.size(), 2) + put(valueSize, 2) + put(isText ? 1 : 0, 2) + body +
               rest;
    }

    std::string versionResource() const {
        std::string strings;
        for (const auto& [name, text] : texts)
            strings += padded(block(name, utf16(text).size() / 2, true, utf16(text), {}));
        const std::string info =
            block("StringFileInfo", 0, true, {}, block("040904B0", 0, true, {}, strings));
        const std::string fixed = put(0xFEEF04BD, 4) + put(0x10000, 4) + put(2, 2) + put(1, 2) + put(4, 2) +
                                  put(3, 2) + std::string(36, '\0');
        const std::string other =
            padded(block("VarFileInfo", 0, true, {}, block("Translation", 4, false, "abcd", {})));
        return block("VS_VERSION_INFO", fixed.size(), false, fixed, other + info);
    }
};

}  // namespace toolkit::quorvis
