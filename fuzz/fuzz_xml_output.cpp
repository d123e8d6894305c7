// The hardware scanner's output file. Any bytes must be refused or give consistent tables, and a tree must not change
// when its text is read again.
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <sstream>

#include "fuzz/MemoryFile.h"
#include "hw/HWParser.h"
#include "intake/XMLParser.h"
#include "kest/Text.h"

namespace {

std::string textOf(const tessa::Node& root) {
    std::ostringstream text;
    root.write(text, tessa::Node::kCompact);
    return text.str();
}

void checkRoundTrip(const tessa::Node& root) {
    const std::string text = textOf(root);
    const zavfuzz::MemoryFile again(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    const zav::XMLParser parser(nullptr, kest::widen(again.path()).c_str());
    if (parser.status != 0 || textOf(*parser.getRootNode()) != text) std::abort();
}

void checkRow(const zav::HWTables::Row& row) {
    if ((zav::HWTables::nameArray(row) == nullptr) != (row.size() == 0)) std::abort();
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (std::wcslen(tessa::TextStore::wide(row.values[i])) > std::strlen(row.values[i])) std::abort();
    }
}

void checkTables(ZAVHwCtx& context, const tessa::Node* root) {
    const int code = zav::HW_parseHWData(&context, root);
    if (code != 0 && code != ZAV_ERROR_HW_OUTPUT) std::abort();
    for (int group = 0; group < zav::kGroupSlots; ++group) {
        for (int i = 0; const zav::HWTables::Row* const row = context.tables.find(group, i); ++i)
            checkRow(*row);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zavfuzz::MemoryFile file(data, size);
    ZAVHwCtx context;
    context.discardResults();
    const zav::XMLParser parser(nullptr, kest::widen(file.path()).c_str());
    if ((parser.status == 0) != (parser.getRootNode() != nullptr)) std::abort();
    if (parser.status == 0) {
        checkTables(context, parser.getRootNode());
        checkRoundTrip(*parser.getRootNode());
    }
    return 0;
}
