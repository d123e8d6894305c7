#pragma once

#include <string>

namespace zavtest {

// The configuration file with one section that the library must write for a scanner: `section` is "Hardware" or "XSE",
// `content` the lines in it.
inline std::string configText(const std::string& section, const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!-- This file was written by the inventory client library zav.\n"
           "    It is the input of one scanner run and is deleted with the library's context.\n"
           "    Licensed under the Apache License, Version 2.0: it may be used, copied and\n"
           "    changed as that license permits, and is provided on an \"as is\" basis,\n"
           "    without warranties or conditions of any kind, either express or implied.\n"
           "    See the file LICENSE that comes with the library. -->\n"
           "<QEL xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xsi:noNamespaceSchemaLocation=\"zavcli.xsd\">\n"
           "    <ZAV>\n"
           "\t\t<" +
           section + " version=\"1.0\">\n" + content + "\t\t</" + section +
           ">\n"
           "    </ZAV>\n"
           "</QEL>\n";
}

}  // namespace zavtest
