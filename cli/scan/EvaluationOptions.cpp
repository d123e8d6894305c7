#include "cli/scan/EvaluationOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "cli/scan/ErrorMessages.h"
#include "cli/scan/Xml.h"
#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

bool isGuid(std::string_view text) {
    constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    if (text.starts_with('{') && text.ends_with('}')) text = text.substr(1, text.size() - 2);
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](char byte, char form) {
        return form == '-' ? byte == '-' : std::isxdigit(static_cast<unsigned char>(byte)) != 0;
    });
}

// The library writes options into an XML file as they are.
std::wstring forLibrary(const std::string& text) {
    return widenBytes(escapeXml(text));
}

}  // namespace

Preset parsePreset(const std::string& text, const Identifiers& identifiers) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(
            kExitBadUsage,
            fmt::format("--variable: '{}' does not have the form NAME=VALUE or NAME=VALUE@GUID", text));
    Preset preset{text.substr(0, equals), text.substr(equals + 1), ""};
    const std::size_t at = preset.value.rfind('@');
    if (at == std::string::npos) return preset;
    std::string guid = preset.value.substr(at + 1);
    if (!isGuid(guid) && !identifiers.contains(lowerCase(guid))) return preset;
    preset.guid = std::move(guid);
    preset.value.erase(at);
    return preset;
}

std::vector<Preset> parsePresets(const std::vector<std::string>& texts, const Identifiers& identifiers) {
    std::vector<Preset> presets;
    for (const std::string& text : texts) {
        Preset preset = parsePreset(text, identifiers);
        const auto sameName = [&](const Preset& other) { return other.name == preset.name; };
        if (std::any_of(presets.begin(), presets.end(), sameName))
            throw Failure(kExitBadUsage,
                          fmt::format("--variable: '{}' is given twice; a variable has one value per run",
                                      preset.name));
        presets.push_back(std::move(preset));
    }
    return presets;
}

Setting parseSetting(const std::string& text) {
    const std::size_t dot = text.find('.');
    const std::size_t equals = text.find('=');
    const bool formed = equals != std::string::npos && dot < equals && dot > 0 && dot + 1 < equals;
    if (!formed)
        throw Failure(kExitBadUsage,
                      fmt::format("--config: '{}' does not have the form PLUGIN.ATTRIBUTE=VALUE", text));
    return {text.substr(0, dot), text.substr(dot + 1, equals - dot - 1), text.substr(equals + 1)};
}

void applyOptions(LibraryHandle& library, const std::vector<Preset>& presets,
                  const std::vector<Setting>& settings) {
    ZAVSwCtx* const software = library.software();
    for (const Preset& preset : presets) {
        requireSuccess(ZAV_sw_setopt_variable(software, forLibrary(preset.name).c_str(),
                                              forLibrary(preset.value).c_str(),
                                              forLibrary(preset.guid).c_str()));
    }
    for (const Setting& setting : settings) {
        requireSuccess(ZAV_sw_setopt_config(software, forLibrary(setting.plugin).c_str(),
                                            forLibrary(setting.attribute).c_str(),
                                            forLibrary(setting.value).c_str()));
    }
}

}  // namespace zavcli
