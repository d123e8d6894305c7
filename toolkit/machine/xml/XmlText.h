#pragma once

#include <string>
#include <string_view>

namespace toolkit {

// Appends bytes as the text of an XML element, in ASCII. Bytes that are not valid UTF-8 are interpreted as ISO-8859-1.
// Characters that XML does not allow are dropped.
void appendXmlText(std::string& xml, std::string_view bytes);

// Appends ` name="value"` in ASCII. Line feeds and tabs are escaped, so that a reader does not turn them into blanks.
void appendXmlAttribute(std::string& xml, std::string_view name, std::string_view value);

}  // namespace toolkit
