// The hardware scanner's output file. Any bytes must be refused or give consistent tables, and a tree must not change
// when its text is read again.
#include <cstdlib>
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

void checkFieldNames(const zav::HWInstance& instance) {
    if ((instance.fieldNames == nullptr) != instance.fields.empty()) std::abort();
    for (std::size_t i = 0; i < instance.fields.size(); ++i) {
        if (instance.fieldNames.get()[i] != instance.fields[i].name) std::abort();
    }
}

void checkTables(ZAVHwCtx& context, const tessa::Node* root) {
    const int code = zav::HW_parseHWData(&context, root);
    if (code != 0 && code != ZAV_ERROR_HW_OUTPUT) std::abort();
    for (const auto& instances : context.groups) {
        for (const zav::HWInstance& instance : instances) checkFieldNames(instance);
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
