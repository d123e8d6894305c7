#include "fuzz/hostile/PackageDatabases.h"

#include <cstdint>

namespace hostile {

namespace {

std::string bigEndian(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
    return bytes;
}

// A variable-length integer of SQLite: seven bits per byte, the highest first.
std::string varint(std::uint64_t value) {
    std::string bytes(1, static_cast<char>(value & 0x7FU));
    while ((value >>= 7U) != 0) bytes.insert(bytes.begin(), static_cast<char>((value & 0x7FU) | 0x80U));
    return bytes;
}

std::string rpmHeader(Random& random) {
    std::string index;
    std::string store;
    std::uint64_t entries = 0;
    const std::string summary(random.oneIn(3) ? 8'000 : 8, 's');
    for (const auto& [tag, text] : {std::pair<int, std::string>{1000, "name"},
                                    {1001, "1.2"},
                                    {1002, "3"},
                                    {1004, summary},
                                    {1011, summary},
                                    {1022, "x86_64"},
                                    {1044, "name-1.2-3.src.rpm"}}) {
        index += bigEndian(static_cast<std::uint64_t>(tag), 4) + bigEndian(6, 4) +
                 bigEndian(store.size(), 4) + bigEndian(1, 4);
        store += text + '\0';
        ++entries;
    }
    for (const int tag : {1003, 1008, 1009}) {
        index += bigEndian(static_cast<std::uint64_t>(tag), 4) + bigEndian(4, 4) +
                 bigEndian(store.size(), 4) + bigEndian(1, 4);
        store += bigEndian(random.oneIn(2) ? 0xFFFFFFFF : 7, 4);
        ++entries;
    }
    return bigEndian(entries, 4) + bigEndian(store.size(), 4) + index + store;
}

// A leaf page of an SQLite table with one cell at its end and `pointers` pointers to it.
std::string leafPage(std::size_t size, std::size_t head, const std::string& cell, std::size_t pointers) {
    std::string page(size, '\0');
    const std::size_t at = size - cell.size();
    page.replace(at, cell.size(), cell);
    page.replace(head, 8,
                 bigEndian(13, 1) + bigEndian(0, 2) + bigEndian(pointers, 2) + bigEndian(at, 2) + '\0');
    for (std::size_t i = 0; i < pointers; ++i) page.replace(head + 8 + 2 * i, 2, bigEndian(at, 2));
    return page;
}

std::string cellOf(const std::string& types, const std::string& values) {
    const std::string record = varint(types.size() + 1) + types + values;
    return varint(record.size()) + varint(1) + record;
}

// Two pages: the schema and the table of packages, whose pointers may all refer to one cell.
std::string rpmDatabase(Random& random) {
    constexpr std::size_t kPage = 32768;
    constexpr std::size_t kHead = 100;
    const std::string sql = "CREATE TABLE Packages(hnum, blob)";
    const std::string schema =
        cellOf(varint(23) + varint(29) + varint(29) + varint(1) + varint(13 + 2 * sql.size()),
               "tablePackagesPackages" + bigEndian(2, 1) + sql);
    std::string first = leafPage(kPage, kHead, schema, 1);
    first.replace(0, 24, std::string("SQLite format 3\0\x80\0\1\1\0\x40\x20\x20", 24));
    const std::string header = rpmHeader(random);
    const std::string package = cellOf(varint(1) + varint(12 + 2 * header.size()), bigEndian(1, 1) + header);
    const std::size_t most = (kPage - package.size() - 8) / 2;
    return first + leafPage(kPage, 0, package, random.oneIn(2) ? 1 : 1 + random.below(most));
}

std::string dpkgStanza(const std::string& name) {
    return "Package: " + name +
           "\nStatus: install ok installed\nPriority: required\nSection: admin\nInstalled-Size: 1234\n"
           "Maintainer: A <a@b.org>\nArchitecture: amd64\nMulti-Arch: same\nVersion: 1:1.2-3\n"
           "Description: text\n more text\n\n";
}

}  // namespace

std::vector<Seed> packageDatabases(Random& random) {
    std::string status;
    std::string installed;
    for (std::size_t i = random.oneIn(8) ? 20'000 : random.below(20) + 1; i > 0; --i) {
        status += dpkgStanza("p" + std::to_string(i));
        installed += "C:Q1\nP:p" + std::to_string(i) + "\nV:1.2-r0\nA:x86_64\nI:123\no:a\nT:text\n\n";
    }
    std::vector<Seed> seeds = {
        {"var/lib/dpkg/status", status},
        {"var/lib/dpkg/status.d/a", dpkgStanza("a")},
        {"lib/apk/db/installed", installed},
        {"var/lib/rpm/rpmdb.sqlite", rpmDatabase(random)},
        {"snap/a/current/meta/snap.yaml", "name: a\nversion: '1.2'\nsummary: text\narchitectures: [amd64]\n"},
        {"var/lib/flatpak/app/org.a/current/active/metadata", "[Application]\nname=org.a\n"},
    };
    for (std::size_t i = random.oneIn(20) ? 2'000 : random.below(4); i > 0; --i)
        seeds.push_back({"var/lib/pacman/local/a" + std::to_string(i) + "/desc",
                         "%NAME%\na\n\n%VERSION%\n1:1.2-1\n\n%INSTALLDATE%\n1700000000\n\n%SIZE%\n1234\n"});
    return seeds;
}

}  // namespace hostile
