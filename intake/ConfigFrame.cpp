#include "intake/ConfigFrame.h"

namespace zav {

const std::array<const char*, 4> kConfigFrameHead = {
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n",
    "<!-- This file was written by the inventory client library zav.\n"
    "    It is the input of one scanner run and is deleted with the library's context.\n"
    "    Licensed under the Apache License, Version 2.0: it may be used, copied and\n"
    "    changed as that license permits, and is provided on an \"as is\" basis,\n"
    "    without warranties or conditions of any kind, either express or implied.\n"
    "    See the file LICENSE that comes with the library. -->\n",
    "<QEL xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xsi:noNamespaceSchemaLocation=\"zavcli.xsd\">\n",
    "    <ZAV>\n",
};

const std::array<const char*, 2> kConfigFrameTail = {
    "    </ZAV>\n",
    "</QEL>\n",
};

}  // namespace zav
