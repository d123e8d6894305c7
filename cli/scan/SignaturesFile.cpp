#include "cli/scan/SignaturesFile.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/system/Failure.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

constexpr std::size_t kLargest = 64 << 20;  // what the bundled scanner reads at most

struct Reading {
    XML_Parser parser;
    SignaturesFile& file;
    bool joinable;
    int depth = 0;
    std::size_t bodyBegin = 0;
    std::size_t bodyEnd = 0;
    std::string guid = {};  // of the signature at hand, in lower case
};

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw Failure(kExitBadUsage, fmt::format("cannot read '{}': {}", path, reason));
}

// The library puts the path between double quotes when it starts the scanner.
void requirePassable(const std::string& path) {
    if (path.find('"') != std::string::npos)
        refuse(path, "the library cannot pass on a path with double quotes; rename it");
}

std::vector<std::string> xmlFilesIn(const std::string& directory) {
    std::error_code error;
    std::vector<std::string> paths;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->path().extension() == ".xml" && entry->is_regular_file(ignored))
            paths.push_back(entry->path().string());
    }
    if (error) refuse(directory, error.message());
    if (paths.empty()) refuse(directory, "it is a directory without *.xml files");
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) refuse(path, std::generic_category().message(errno));
    std::string content(std::min(static_cast<std::size_t>(file.tellg()), kLargest), '\0');
    file.seekg(0);
    if (!file.read(content.data(), static_cast<std::streamsize>(content.size())))
        refuse(path, std::generic_category().message(errno));
    return content;
}

// The name of an encoding in which characters have zero bytes; null for others.
const char* wideEncodingOf(std::string_view content) {
    constexpr std::array<std::pair<std::string_view, const char*>, 8> kStarts{
        {{{"\xff\xfe\0\0", 4}, "UTF-32"},
         {{"\0\0\xfe\xff", 4}, "UTF-32"},
         {{"<\0\0\0", 4}, "UTF-32"},
         {{"\0\0\0<", 4}, "UTF-32"},
         {{"\xff\xfe", 2}, "UTF-16"},
         {{"\xfe\xff", 2}, "UTF-16"},
         {{"<\0", 2}, "UTF-16"},
         {{"\0<", 2}, "UTF-16"}}};
    for (const auto& [start, name] : kStarts) {
        if (content.starts_with(start)) return name;
    }
    return nullptr;
}

std::size_t offset(const Reading& reading) {
    return static_cast<std::size_t>(XML_GetCurrentByteIndex(reading.parser));
}

// Returns its identifier in lower case.
std::string noteSignature(SignaturesFile& file, const char** attributes) {
    ++file.count;
    std::string guid;
    std::string name;
    for (; *attributes != nullptr; attributes += 2) {
        if (std::string_view(attributes[0]) == "guid") guid = lowerCase(attributes[1]);
        if (std::string_view(attributes[0]) == "name") name = attributes[1];
    }
    if (guid.empty()) return guid;
    noteName(file.names, guid, name);
    file.variables[guid];
    return guid;
}

// Notes the variables that a text of a signature uses: "${name}", which "$${" is not.
void noteUses(std::set<std::string>& uses, std::string_view text) {
    for (std::size_t at = text.find("${"); at != std::string_view::npos; at = text.find("${", at + 2)) {
        const std::size_t end = text.find('}', at);
        const bool literal = at > 0 && text[at - 1] == '$';
        if (!literal && end != std::string_view::npos) uses.emplace(text.substr(at + 2, end - at - 2));
    }
}

void noteUses(std::set<std::string>& uses, std::string_view element, const char** attributes) {
    for (; *attributes != nullptr; attributes += 2) {
        noteUses(uses, attributes[1]);
        if (element == "Preset" && std::string_view(attributes[0]) == "name") uses.emplace(attributes[1]);
    }
}

void begin(void* data, const char* name, const char** attributes) {
    auto& reading = *static_cast<Reading*>(data);
    ++reading.depth;
    if (reading.depth == 1) {
        reading.joinable =
            reading.joinable && std::string_view(name) == "Signatures" && *attributes == nullptr;
        reading.bodyBegin =
            offset(reading) + static_cast<std::size_t>(XML_GetCurrentByteCount(reading.parser));
    } else if (reading.depth == 2 && std::string_view(name) == "Signature") {
        reading.guid = noteSignature(reading.file, attributes);
    }
    if (reading.depth >= 2) noteUses(reading.file.variables[reading.guid], name, attributes);
}

void end(void* data, const char* /*name*/) {
    auto& reading = *static_cast<Reading*>(data);
    if (--reading.depth == 0) reading.bodyEnd = offset(reading);
}

void declaration(void* data, const char* /*version*/, const char* encoding, int /*standalone*/) {
    if (encoding != nullptr && lowerCase(encoding) != "utf-8" && lowerCase(encoding) != "us-ascii")
        static_cast<Reading*>(data)->joinable = false;
}

// A document type may define entities, and the scanner refuses it; there is no need to expand any here.
void documentType(void* data, const char* /*name*/, const char* /*system*/, const char* /*publicId*/,
                  int /*hasSubset*/) {
    XML_StopParser(static_cast<Reading*>(data)->parser, XML_FALSE);
}

// Whether the content is well-formed.
bool parse(const std::string& content, const char* encoding, SignaturesFile& file) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(encoding),
                                                                              XML_ParserFree);
    if (parser == nullptr) throw std::bad_alloc();
    // UTF-16 needs no declaration, but holds a zero byte in every tag.
    Reading reading{parser.get(), file, encoding == nullptr && content.find('\0') == std::string::npos};
    XML_SetUserData(parser.get(), &reading);
    XML_SetElementHandler(parser.get(), begin, end);
    XML_SetXmlDeclHandler(parser.get(), declaration);
    XML_SetStartDoctypeDeclHandler(parser.get(), documentType);
    if (XML_Parse(parser.get(), content.data(), static_cast<int>(content.size()), 1) != XML_STATUS_OK)
        return false;
    file.wellFormed = true;
    if (reading.joinable) file.body = content.substr(reading.bodyBegin, reading.bodyEnd - reading.bodyBegin);
    return true;
}

}  // namespace

std::vector<std::string> signaturesPaths(const std::vector<std::string>& arguments) {
    std::vector<std::string> paths;
    for (const std::string& argument : arguments) {
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::status(argument, error);
        if (std::filesystem::is_directory(status)) {
            const std::vector<std::string> files = xmlFilesIn(argument);
            paths.insert(paths.end(), files.begin(), files.end());
        } else if (std::filesystem::is_regular_file(status)) {
            paths.push_back(argument);
        } else {
            refuse(argument, error                             ? error.message()
                             : std::filesystem::exists(status) ? "it is neither a file nor a directory"
                                                               : "No such file or directory");
        }
    }
    std::for_each(paths.begin(), paths.end(), requirePassable);
    return paths;
}

void noteName(std::map<std::string, std::string>& names, const std::string& guid, const std::string& name) {
    const bool plain = name.find("${") == std::string::npos;
    const auto [known, isNew] = names.emplace(guid, plain ? name : "");
    if (!isNew && known->second != name) known->second.clear();
}

SignaturesFile readSignaturesFile(const std::string& path) {
    const std::string content = contentOf(path);
    if (const char* const encoding = wideEncodingOf(content); encoding != nullptr)
        refuse(path, fmt::format("it is {}; signatures files are UTF-8", encoding));
    SignaturesFile file;
    file.path = path;
    if (parse(content, nullptr, file)) return file;
    // Bytes that are not UTF-8 are taken for ISO-8859-1, as the bundled scanner takes them.
    SignaturesFile other;
    other.path = path;
    return parse(content, "ISO-8859-1", other) ? other : file;
}

}  // namespace zavcli
