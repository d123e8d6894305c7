#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace toolkit::quorvis {

// The attributes of all leaves but id, min and max, which every leaf has.
enum class Attribute : std::uint8_t {
    Above,
    Arch,
    ArgsRegex,
    AtLeast,
    AtMost,
    Below,
    BuildId,
    Compare,
    Corpus,
    Equals,
    Exclude,
    Exe,
    Flags,
    Format,
    Key,
    Kind,
    Left,
    Machine,
    MaxBytes,
    MaxDepth,
    MaxSize,
    MinSize,
    Mode,
    Name,
    NameRegex,
    Needed,
    Owner,
    Patch,
    Path,
    Pattern,
    Regex,
    Regid,
    Role,
    Scheme,
    Section,
    Select,
    Sha256,
    Size,
    Soname,
    Source,
    TagId,
    Type,
    User,
};

// As it is written in a signature: "argsRegex".
std::string_view nameOf(Attribute attribute);
std::optional<Attribute> attributeNamed(std::string_view name);

}  // namespace toolkit::quorvis
