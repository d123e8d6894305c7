#include "intake/XMLParser.h"

#include "tessa/NodeReader.h"

namespace zav {

XMLParser::XMLParser(ZAVlog* log, const wchar_t* path) : status(1), sink_(log) {
    tessa::NodeReader reader(sink_);
    reader.blockSize = 0;
    reader.keepWhitespace = false;
    reader.refuseDoctype = false;
    reader.expandNamespaces = false;
    reader.process(kest::String(path), 0);
    status = reader.status;
}

}  // namespace zav
