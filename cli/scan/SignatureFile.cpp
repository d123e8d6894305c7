#include "cli/scan/SignatureFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/scan/Xml.h"
#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxSize = 64 << 20;  // the bundled scanner reads no more

struct Reading {
    XML_Parser parser;
    SignatureFile& file;
    bool joinable;
    int depth = 0;
    std::size_t bodyBegin = 0;
    std::size_t bodyEnd = 0;
    std::string guid = {};  // the identifier of the current signature in lower case
    bool inMetadata = false;
    bool inPublisher = false;
};

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw Failure(kExitBadUsage, fmt::format("cannot read '{}': {}", path, reason));
}

// The library encloses the path in double quotes in the command line of the scanner.
void requirePassable(const std::string& path) {
    if (path.find('"') != std::string::npos)
        refuse(path, "the path contains double quotes, which the library cannot pass on; rename it");
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
    if (!file) refuse(path, systemErrorText(errno));
    std::string content(std::min(static_cast<std::size_t>(file.tellg()), kMaxSize), '\0');
    file.seekg(0);
    if (!file.read(content.data(), static_cast<std::streamsize>(content.size())))
        refuse(path, systemErrorText(errno));
    return content;
}

// The name of an encoding that uses zero bytes for ASCII characters; null for other encodings.
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

// The name becomes empty if it contains variables or differs from an earlier one of the same identifier.
void addName(std::map<std::string, std::string>& names, const std::string& guid, const std::string& name) {
    const bool plain = name.find("${") == std::string::npos;
    const auto [known, isNew] = names.emplace(guid, plain ? name : "");
    if (!isNew && known->second != name) known->second.clear();
}

// Records a signature. Returns its identifier in lower case.
std::string addSignature(SignatureFile& file, const char** attributes) {
    ++file.count;
    SignatureEntry entry;
    for (; *attributes != nullptr; attributes += 2) {
        if (std::string_view(attributes[0]) == "guid") entry.guid = attributes[1];
        if (std::string_view(attributes[0]) == "name") entry.name = attributes[1];
    }
    std::string guid = lowerCase(entry.guid);
    if (guid.empty()) return guid;
    addName(file.names, guid, entry.name);
    file.variables[guid];
    file.entries.push_back(std::move(entry));
    return guid;
}

// Records the variables that a text uses: "${name}", except after another "$".
void addUses(std::set<std::string>& uses, std::string_view text) {
    for (std::size_t at = text.find("${"); at != std::string_view::npos; at = text.find("${", at + 2)) {
        const std::size_t end = text.find('}', at);
        const bool escaped = at > 0 && text[at - 1] == '$';
        if (!escaped && end != std::string_view::npos) uses.emplace(text.substr(at + 2, end - at - 2));
    }
}

void addUses(std::set<std::string>& uses, std::string_view element, const char** attributes) {
    for (; *attributes != nullptr; attributes += 2) {
        addUses(uses, attributes[1]);
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
        reading.guid = addSignature(reading.file, attributes);
    } else if (reading.depth == 3) {
        reading.inMetadata = !reading.guid.empty() && std::string_view(name) == "Metadata";
    } else if (reading.depth == 4) {
        reading.inPublisher = reading.inMetadata && std::string_view(name) == "Publisher" &&
                              reading.file.entries.back().publisher.empty();
    }
    if (reading.depth >= 2) addUses(reading.file.variables[reading.guid], name, attributes);
}

void end(void* data, const char* /*name*/) {
    auto& reading = *static_cast<Reading*>(data);
    if (--reading.depth == 0) reading.bodyEnd = offset(reading);
    reading.inPublisher = false;
}

void characters(void* data, const char* text, int length) {
    const auto& reading = *static_cast<Reading*>(data);
    if (reading.inPublisher)
        reading.file.entries.back().publisher.append(text, static_cast<std::size_t>(length));
}

void declaration(void* data, const char* /*version*/, const char* encoding, int /*standalone*/) {
    if (encoding != nullptr && lowerCase(encoding) != "utf-8" && lowerCase(encoding) != "us-ascii")
        static_cast<Reading*>(data)->joinable = false;
}

// The scanner refuses a document type declaration, so its entities are not expanded here either.
void documentType(void* data, const char* /*name*/, const char* /*system*/, const char* /*publicId*/,
                  int /*hasSubset*/) {
    XML_StopParser(static_cast<Reading*>(data)->parser, XML_FALSE);
}

// Returns whether the content is well-formed.
bool parse(const std::string& content, const char* encoding, SignatureFile& file) {
    // UTF-16 needs no declaration. Zero bytes reveal it.
    Reading reading{nullptr, file, encoding == nullptr && content.find('\0') == std::string::npos};
    XmlParser parser(encoding, &reading, begin, end);
    reading.parser = parser.get();
    XML_SetCharacterDataHandler(parser.get(), characters);
    XML_SetXmlDeclHandler(parser.get(), declaration);
    XML_SetStartDoctypeDeclHandler(parser.get(), documentType);
    if (!parser.parse(content)) return false;
    file.wellFormed = true;
    if (reading.joinable) file.body = content.substr(reading.bodyBegin, reading.bodyEnd - reading.bodyBegin);
    return true;
}

}  // namespace

std::vector<std::string> signatureFilePaths(const std::vector<std::string>& arguments) {
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

SignatureFile readSignatureFile(const std::string& path) {
    const std::string content = contentOf(path);
    if (const char* const encoding = wideEncodingOf(content); encoding != nullptr)
        refuse(path, fmt::format("its encoding is {}; signature files must be UTF-8", encoding));
    SignatureFile file;
    file.path = path;
    if (parse(content, nullptr, file)) return file;
    // A file that is not valid UTF-8 is read as ISO-8859-1, as the bundled scanner does.
    SignatureFile other;
    other.path = path;
    return parse(content, "ISO-8859-1", other) ? other : file;
}

std::map<std::string, std::string> namesIn(const std::vector<SignatureFile>& files) {
    std::map<std::string, std::string> names;
    for (const SignatureFile& file : files) {
        for (const auto& [guid, name] : file.names) addName(names, guid, name);
    }
    return names;
}

}  // namespace zavcli
