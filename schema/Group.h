// The groups and fields of the hardware inventory, as data. schema/groups has one file per group.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace schema {

// The form of a value. An unknown value is empty, whatever its type.
enum class Type : std::uint8_t {
    Text,
    Count,            // a decimal number without a sign that fits into 63 bits
    Integer,          // a decimal number that may be negative
    Decimal,          // two counts with a point between them
    Boolean,          // true, false
    Time,             // 2026-11-21T07:54:56Z, or 2026-11-21 if only the day is known
    Hex,              // lower-case hexadecimal digits
    Uuid,             // 8-4-4-4-12 lower-case hexadecimal digits
    Choice,           // one of the words in `choices`
    Ipv4Address,      // 192.0.2.1
    Ipv6Address,      // 2001:db8::1
    HardwareAddress,  // pairs of lower-case hexadecimal digits with colons between them
};

// What a value tells of the machine and its users. --sanitize hashes all but public values.
enum class Privacy : std::uint8_t {
    Public,
    Serial,   // identifies one machine, part or medium: serial numbers, UUIDs
    Address,  // where something is reached: network addresses, hosts
    Name,     // names that people gave: hosts, accounts, guests
    Path,     // where something is; only those parts are hashed that not most systems have
    Content,  // command lines and other texts that may contain any of the above
};

enum class Access : std::uint8_t {
    Everyone,
    RootSeesMore,  // other users may find no value, or one from another source
    RootOnly,
};

struct Field {
    std::string_view name;
    Type type = Type::Text;
    std::string_view unit = {};     // "KiB"; empty for a number of things
    bool binary = false;            // a number of bytes that people count in powers of 1024
    std::string_view choices = {};  // of Type::Choice: "HDD|SSD"
    bool list = false;              // several values of the type, joined by ";"
    bool key = false;               // one of the fields that tell the instances of a group apart
    bool isVolatile = false;        // changes while the machine stays the same; --no-volatile empties it
    Privacy privacy = Privacy::Public;
    Access access = Access::Everyone;
    bool bytewise = false;  // of a first field: instances are sorted by its bytes, not by the numbers in it
    bool liveOnly = false;  // unknown in a captured tree
    bool liveSeesMore = false;  // a captured tree may have no value, or one from another source
    std::string_view meaning = {};
    std::string_view source = {};
};

struct Group {
    int id;                    // its number in zav.h
    std::string_view name;     // "IP Address"
    std::string_view element;  // "IPAddress"
    std::string_view about;    // what it holds; paragraphs are separated by an empty line
    // The fields of every instance, in this order. Instances are sorted by the first one. A group whose fields are not
    // keys has at most one instance.
    std::span<const Field> fields = {};
    std::string_view notOnLinux = {};  // why no Linux machine has the group: "windows"
    // The fields that a table shows first, the most important one first, separated by blanks. Their names fit into 80 columns.
    std::string_view columns = {};
};

}  // namespace schema
