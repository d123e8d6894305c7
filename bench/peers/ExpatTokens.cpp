#include "bench/peers/ExpatTokens.h"

#include <fcntl.h>
#include <unistd.h>

namespace zavbench {

bool parseFile(XML_Parser parser, const std::string& path) {
    constexpr int kBlock = 64 << 10;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    bool good = file >= 0;
    for (int count = 1; good && count != 0;) {
        void* const block = XML_GetBuffer(parser, kBlock);
        count = static_cast<int>(::read(file, block, kBlock));
        good = count >= 0 && XML_ParseBuffer(parser, count, count == 0 ? 1 : 0) == XML_STATUS_OK;
    }
    ::close(file);
    return good;
}

bool tokeniseWithExpat(const std::string& path) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    const bool good = parseFile(parser, path);
    XML_ParserFree(parser);
    return good;
}

}  // namespace zavbench
