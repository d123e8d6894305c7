#include "hw/HWConfigFile.h"

#include <algorithm>
#include <cstring>

#include "core/NewFile.h"
#include "intake/ConfigFrame.h"

namespace zav {

namespace {

template <std::size_t N>
bool writeAll(ZAVHwCtx* context, FILE* file, const std::array<const char*, N>& texts) {
    return std::all_of(texts.begin(), texts.end(),
                       [=](const char* text) { return HW_writeData(context, file, text); });
}

bool writeGroup(ZAVHwCtx* context, FILE* file, const HWGroup& group) {
    return HW_writeData(context, file, "\t\t<Group Name=\"") &&
           HW_writeData(context, file, group.displayName) && HW_writeData(context, file, "\"/>\n");
}

bool writeEnabledGroups(ZAVHwCtx* context, FILE* file) {
    for (const HWGroup* row = nextGroup(nullptr); row != nullptr; row = nextGroup(row)) {
        const bool enabled = context->groupEnabled.at(static_cast<std::size_t>(row->id)) == 1;
        if (enabled && !writeGroup(context, file, *row)) return false;
    }
    return true;
}

bool writeConfig(ZAVHwCtx* context, FILE* file) {
    return writeAll(context, file, kConfigFrameHead) &&
           HW_writeData(context, file, "\t\t<Hardware version=\"1.0\">\n") &&
           writeEnabledGroups(context, file) && HW_writeData(context, file, "\t\t</Hardware>\n") &&
           writeAll(context, file, kConfigFrameTail);
}

}  // namespace

int HW_generateHWConfigFile(ZAVHwCtx* context, const wchar_t* path) {
    constexpr const char* kFunction = "generateHWConfigFile()";
    ZAVlog& log = context->logger();
    const WriteResult written = writeNewFile(
        path, [context](FILE* file) { return writeConfig(context, file); }, context->failure);
    if (written == WriteResult::kComplete) return ZAV_SUCCESS;
    if (written == WriteResult::kFailed) {
        log.traceMIN(kFunction, "Error during write [%S]", path);
    }
    return ZAV_ERROR_HW_CONFIG;
}

bool HW_writeData(ZAVHwCtx* /*context*/, FILE* file, const char* text) {
    const std::size_t length = std::strlen(text);
    return std::fwrite(text, 1, length, file) == length;
}

}  // namespace zav
