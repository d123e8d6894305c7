#include "cli/capture/Pseudonyms.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "cli/sbom/Digest.h"
#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"
#include "schema/Catalogue.h"

namespace zavcli {

namespace {

constexpr std::size_t kStart = 3;  // characters by which values are found
constexpr std::size_t kLeastLength = 4;
constexpr std::size_t kLeastNameLength = 3;
constexpr std::size_t kLeastLengthAnywhere = 8;
constexpr std::size_t kUuidLength = 36;

bool isAlphanumeric(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool isHex(std::string_view text) {
    return std::ranges::all_of(
        text, [](char c) { return !isAlphanumeric(c) || std::isxdigit(static_cast<unsigned char>(c)) != 0; });
}

std::uint32_t startOf(std::string_view text) {
    std::uint32_t start = 0;
    for (std::size_t i = 0; i < kStart; ++i)
        start = start << 8U | static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(text[i])));
    return start;
}

int valueOfHex(char c) {
    return c <= '9' ? c - '0' : c - 'a' + 10;
}

// The 16 bytes of a UUID in lower-case hexadecimal digits. SMBIOS stores the first three parts with the low byte first.
std::string bytesOf(std::string_view uuid, bool lowFirst) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < uuid.size(); i += 2) {
        if (uuid[i] == '-') ++i;
        bytes += static_cast<char>(valueOfHex(uuid[i]) * 16 + valueOfHex(uuid[i + 1]));
    }
    if (lowFirst && bytes.size() == 16) {
        std::reverse(bytes.begin(), bytes.begin() + 4);
        std::reverse(bytes.begin() + 4, bytes.begin() + 6);
        std::reverse(bytes.begin() + 6, bytes.begin() + 8);
    }
    return bytes;
}

bool isUuidText(std::string_view text) {
    return text.size() == kUuidLength && text[8] == '-' && text[13] == '-' && text[18] == '-' &&
           text[23] == '-' && isHex(text);
}

// Names of accounts that belong to the system, and words that stand for no particular machine or user.
std::vector<std::string> commonNames(const HardwareInventory& inventory) {
    std::vector<std::string> names = {"root",      "users",     "nobody",    "nogroup", "localhost",
                                      "127.0.0.1", "127.0.0.0", "127.0.1.1", "0.0.0.0", "255.255.255.255"};
    for (const Group& group : inventory.groups) {
        if (group.name != "UserAccountInfo") continue;
        for (const Instance& account : group.instances) {
            if (valueOf(account, "SystemAccount") == "true")
                names.push_back(lowerCase(valueOf(account, "Name")));
        }
    }
    return names;
}

// Adds the names of the groups with numbers that systems give to their own.
void addSystemGroups(std::string_view groupFile, std::vector<std::string>& names) {
    constexpr std::size_t kMostDigits = 3;
    while (!groupFile.empty()) {
        const std::string_view line = groupFile.substr(0, groupFile.find('\n'));
        groupFile.remove_prefix(std::min(line.size() + 1, groupFile.size()));
        const std::size_t name = line.find(':');
        const std::size_t password = name == std::string_view::npos ? name : line.find(':', name + 1);
        if (password == std::string_view::npos) continue;
        const std::string_view number =
            line.substr(password + 1, line.find(':', password + 1) - password - 1);
        if (!number.empty() && number.size() <= kMostDigits) names.push_back(lowerCase(line.substr(0, name)));
    }
}

bool isEmptied(std::string_view path) {
    constexpr std::array<std::string_view, 8> kStarts = {
        "proc/self/net/", "var/log/wtmp",    "var/log/btmp", "var/log/lastlog",
        "var/lib/wtmpdb", "var/lib/lastlog", "run/utmp",     "run/systemd/sessions"};
    return path.ends_with("/dconf/user") ||
           std::ranges::any_of(kStarts, [path](std::string_view start) { return path.starts_with(start); });
}

// The serial number of a monitor is a number in its description, whose last byte makes the sum of all bytes zero.
void hideSerialOfMonitor(std::string& edid) {
    constexpr std::size_t kBlock = 128;
    constexpr std::size_t kSerial = 12;
    if (edid.size() < kBlock) return;
    std::fill_n(edid.begin() + kSerial, 4, '\0');
    unsigned sum = 0;
    for (std::size_t i = 0; i + 1 < kBlock; ++i) sum += static_cast<unsigned char>(edid[i]);
    edid[kBlock - 1] = static_cast<char>(0x100U - sum % 0x100U);
}

}  // namespace

Pseudonyms::Pseudonyms(const HardwareInventory& inventory, std::string_view groupFile) : key_(32, '\0') {
    if (::getrandom(key_.data(), key_.size(), 0) != static_cast<ssize_t>(key_.size()))
        throw Failure(kExitFailed, "the system provides no random numbers");
    std::vector<std::string> common = commonNames(inventory);
    addSystemGroups(groupFile, common);
    for (const Group& group : inventory.groups) collect(group, common);
    for (auto& [start, indices] : byStart_) {
        std::ranges::stable_sort(indices, [this](std::size_t left, std::size_t right) {
            return values_[left].original.size() > values_[right].original.size();
        });
    }
}

void Pseudonyms::collect(const Group& group, const std::vector<std::string>& common) {
    const schema::Group* const known = schema::findGroup(group.name);
    if (known == nullptr) return;
    for (const Instance& instance : group.instances) {
        for (const Field& field : instance) {
            const schema::Field* const definition = schema::findField(*known, field.name);
            if (definition == nullptr) continue;
            const bool isName = definition->privacy == schema::Privacy::Name;
            if (!isName && definition->privacy != schema::Privacy::Serial &&
                definition->privacy != schema::Privacy::Address)
                continue;
            for (std::string_view rest = field.value; !rest.empty();) {
                const std::string value = lowerCase(rest.substr(0, rest.find(';')));
                rest.remove_prefix(std::min(value.size() + 1, rest.size()));
                if (value.size() < (isName ? kLeastNameLength : kLeastLength)) continue;
                if (std::ranges::find(common, value) == common.end()) add(value, isUuidText(value));
            }
        }
    }
}

void Pseudonyms::add(std::string_view value, bool isUuid) {
    if (!known_.try_emplace(std::string(value), true).second) return;
    const std::string pseudonym = pseudonymOf(value);
    addValue(std::string(value), pseudonym, value.size() >= kLeastLengthAnywhere);
    if (!isUuid) return;
    for (const bool lowFirst : {false, true})
        addValue(bytesOf(value, lowFirst), bytesOf(pseudonym, lowFirst), true);
}

void Pseudonyms::addValue(std::string original, std::string pseudonym, bool anywhere) {
    byStart_[startOf(original)].push_back(values_.size());
    values_.push_back({std::move(original), std::move(pseudonym), anywhere});
}

std::string Pseudonyms::pseudonymOf(std::string_view value) const {
    constexpr std::size_t kDigits = 64;  // of a hash
    const bool hex = isHex(value);
    std::string hash;
    std::string pseudonym(value);
    for (std::size_t i = 0; i < pseudonym.size(); ++i) {
        // Two digits of the hash for each character.
        if (2 * i % kDigits == 0) {
            Digest digest;
            digest.add(key_);
            digest.add(std::to_string(i) + ":");
            digest.add(value);
            hash = digest.finish().sha256;
        }
        const int number = valueOfHex(hash[2 * i % kDigits]) * 16 + valueOfHex(hash[2 * i % kDigits + 1]);
        char& c = pseudonym[i];
        if (c >= '0' && c <= '9')
            c = static_cast<char>('0' + number % 10);
        else if (c >= 'a' && c <= 'z')
            c = static_cast<char>('a' + number % (hex ? 6 : 26));
    }
    return pseudonym;
}

const Pseudonyms::Value* Pseudonyms::match(std::string_view text, std::size_t at) const {
    if (at + kStart > text.size()) return nullptr;
    const auto found = byStart_.find(startOf(text.substr(at, kStart)));
    if (found == byStart_.end()) return nullptr;
    for (const std::size_t index : found->second) {
        const Value& value = values_[index];
        const std::size_t end = at + value.original.size();
        if (end > text.size()) continue;
        const bool isWord =
            (at == 0 || !isAlphanumeric(text[at - 1])) && (end == text.size() || !isAlphanumeric(text[end]));
        if (!isWord && !value.anywhere) continue;
        const std::string_view piece = text.substr(at, value.original.size());
        if (piece == value.original || lowerCase(piece) == value.original) return &value;
    }
    return nullptr;
}

std::string Pseudonyms::replaced(std::string_view text) const {
    std::string result(text);
    for (std::size_t at = 0; at < text.size();) {
        const Value* const value = match(text, at);
        if (value == nullptr) {
            ++at;
            continue;
        }
        for (const char c : value->pseudonym) {
            const bool upper =
                std::isupper(static_cast<unsigned char>(text[at])) != 0 && c >= 'a' && c <= 'z';
            result[at++] = upper ? static_cast<char>(c - 'a' + 'A') : c;
        }
    }
    return result;
}

RecordedFiles Pseudonyms::replaced(const RecordedFiles& files) const {
    RecordedFiles result;
    for (const auto& [path, file] : files) {
        RecordedFile hidden = file;
        hidden.user = 0;
        hidden.group = 0;
        if (file.kind == RecordedFile::Kind::File && isEmptied(path))
            hidden.content.clear();
        else
            hidden.content = replaced(file.content);
        if (path.ends_with("/edid")) hideSerialOfMonitor(hidden.content);
        result[replaced(path)] = std::move(hidden);
    }
    return result;
}

}  // namespace zavcli
