#include "intake/XMLParser.h"

#include <string>

#include "kest/Escape.h"
#include "kest/Text.h"
#include "tessa/NodeReader.h"

namespace zav {

namespace {

// Prepends the file's name to every message.
class NamedSink : public tessa::NodeSink {
  public:
    NamedSink(tessa::NodeSink& sink, const kest::String& path)
        : sink_(sink), prefix_(kest::widen(kest::escaped(kest::narrow(path.view())) + ": ")) {}

    int onNodeTree(tessa::Node* root) override { return sink_.onNodeTree(root); }
    int onWarning(const kest::String& message, int line) override {
        return sink_.onWarning(named(message), line);
    }
    int onError(const kest::String& message, int line) override {
        return sink_.onError(named(message), line);
    }
    int onCriticalError(const kest::String& message, int line) override {
        return sink_.onCriticalError(named(message), line);
    }

  private:
    kest::String named(const kest::String& message) const {
        return kest::String(prefix_ + std::wstring(message.view()));
    }

    tessa::NodeSink& sink_;
    std::wstring prefix_;
};

tessa::NodeReader readerFor(tessa::NodeSink& sink) {
    tessa::NodeReader reader(sink);
    reader.blockSize = 0;
    reader.keepWhitespace = false;
    reader.refuseDoctype = false;
    reader.expandNamespaces = false;
    return reader;
}

}  // namespace

XMLParser::XMLParser(ZAVlog* log, const wchar_t* path) : status(1), path_(path), sink_(log) {
    NamedSink named(sink_, path_);
    tessa::NodeReader reader = readerFor(named);
    reader.process(path_, 0);
    status = reader.status;
}

void XMLParser::reportFault(ZAVlog* log, const kest::String& path, const tessa::Fault& fault) {
    XMLNodeSink sink(log);
    NamedSink(sink, path).onCriticalError(kest::String(kest::widen(fault.message)), fault.line);
}

int XMLParser::lineOf(const tessa::NodePath& place) const {
    XMLNodeSink silent(nullptr);
    return readerFor(silent).lineOf(path_, place);
}

}  // namespace zav
