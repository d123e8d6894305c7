#pragma once

#include <optional>
#include <string>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The directory of the device tree, with a "/" at its end. A captured tree may have only one of its two places.
std::string deviceTree(const Root& root);

// The bytes of a property; empty if there is none.
std::string deviceTreeBytes(const Root& root, const std::string& property);

// The first text of a property of the device tree's root node; empty if there is none. Texts end with a zero byte.
std::string deviceTreeText(const Root& root, const std::string& property);

// A property that is one 32-bit number.
std::optional<std::uint32_t> deviceTreeNumber(const Root& root, const std::string& property);

}  // namespace toolkit::quorvah
