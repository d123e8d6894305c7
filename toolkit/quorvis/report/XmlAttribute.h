#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvis {

// Appends ` name="value"` in pure ASCII; line feeds and tabs of the value come back when it is read.
void appendXmlAttribute(std::string& xml, std::string_view name, std::string_view value);

}  // namespace toolkit::quorvis
