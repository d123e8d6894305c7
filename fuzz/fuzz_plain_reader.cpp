// Plain documents. What the plain reader accepts, in blocks of any size, Expat must accept without a warning and with the
// same content; and the tables that are filled without a tree must be those that the tree gives.
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "fuzz/MemoryFile.h"
#include "hw/HWParser.h"
#include "hw/HWPlainOutput.h"
#include "kest/Text.h"
#include "tessa/DocumentReader.h"
#include "tessa/NodeSink.h"
#include "tessa/ReadError.h"
#include "tessa/TreeBuilder.h"

namespace {

void must(bool holds) {
    if (!holds) std::abort();
}

struct NoMessages : tessa::NodeSink {
    int onNodeTree(tessa::Node*) override { std::abort(); }
    int onWarning(const kest::String&, int) override { std::abort(); }
};

std::string textOf(const tessa::Node& root) {
    std::ostringstream text;
    root.write(text, tessa::Node::kCompact);
    return text.str();
}

std::unique_ptr<tessa::Node> readPlain(const std::string& path, int blockSize, bool keepWhitespace) {
    tessa::DocumentFile file(path.c_str());
    tessa::TreeBuilder builder(keepWhitespace);
    return tessa::readPlainDocument(file, blockSize, builder) ? builder.takeRoot() : nullptr;
}

std::unique_ptr<tessa::Node> readWithExpat(const std::string& path, bool keepWhitespace) {
    tessa::DocumentFile file(path.c_str());
    tessa::ReaderSettings settings;
    settings.keepWhitespace = keepWhitespace;
    NoMessages sink;
    try {
        return tessa::readWithExpat(settings, sink, file);
    } catch (const tessa::Fault&) {
        std::abort();
    }
}

void checkTables(const std::string& path) {
    ZAVHwCtx plain;
    const int instances = zav::HW_readPlainOutput(&plain, kest::widen(path));
    if (instances < 0) return;
    const std::unique_ptr<tessa::Node> root = readWithExpat(path, false);
    ZAVHwCtx context;
    must(zav::HW_parseHWData(&context, root.get()) == 0);
    std::size_t count = 0;
    for (int group = 0; group < zav::kGroupSlots; ++group) {
        must(plain.tables.count(group) == context.tables.count(group));
        count += context.tables.count(group);
        for (int i = 0; const zav::HWTables::Row* const row = context.tables.find(group, i); ++i) {
            const zav::HWTables::Row* const other = plain.tables.find(group, i);
            must(other->size() == row->size());
            for (std::size_t field = 0; field < row->size(); ++field) {
                must(std::wcscmp((*row->names)[field], (*other->names)[field]) == 0);
                must(std::strcmp(row->values[field], other->values[field]) == 0);
            }
        }
    }
    must(count == static_cast<std::size_t>(instances));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zavfuzz::MemoryFile file(data, size);
    const std::string path = file.path();
    // The size also chooses how the document is read.
    const int blockSize = static_cast<int>(size % 71);
    const std::unique_ptr<tessa::Node> root = readPlain(path, blockSize, true);
    if (root == nullptr) return 0;
    must(textOf(*root) == textOf(*readWithExpat(path, true)));
    must(textOf(*readPlain(path, 0, false)) == textOf(*readWithExpat(path, false)));
    checkTables(path);
    return 0;
}
