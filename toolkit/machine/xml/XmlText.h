#pragma once

#include <string>
#include <string_view>

namespace toolkit {

// Appends bytes of any origin as the text of an XML element, in pure ASCII: as UTF-8 if they are valid UTF-8,
// else as ISO-8859-1. Characters that XML forbids are dropped.
void appendXmlText(std::string& xml, std::string_view bytes);

}  // namespace toolkit
