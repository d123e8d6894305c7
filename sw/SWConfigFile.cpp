#include "sw/SWConfigFile.h"

#include <cstring>

#include "core/NewFile.h"
#include "intake/ConfigFrame.h"
#include "kest/Text.h"

namespace zav {

namespace {

// Writes texts one by one. Skips all texts after a failed write.
class ConfigWriter {
  public:
    ConfigWriter(ZAVSwCtx* context, FILE* file) : context_(context), file_(file) {}

    template <class Text>
    ConfigWriter& operator<<(const Text* text) {
        good_ = good_ && SW_writeData(context_, file_, text);
        return *this;
    }
    ConfigWriter& operator<<(const std::wstring& text) { return *this << text.c_str(); }

    bool good() const { return good_; }

  private:
    ZAVSwCtx* context_;
    FILE* file_;
    bool good_ = true;
};

void writeVariables(ConfigWriter& out, const std::map<std::wstring, SWPreset>& variables) {
    if (variables.empty()) return;
    out << "\t\t\t<PresetVariables>\n";
    for (const auto& [name, preset] : variables) {
        out << "\t\t\t\t<Variable name=\"" << name << "\" value=\"" << preset.value << "\" guid=\""
            << preset.scope << "\" />\n";
    }
    out << "\t\t\t</PresetVariables>\n";
}

void writePlugin(ConfigWriter& out, const std::wstring& name, const SWSettings& settings) {
    if (settings.empty()) return;
    out << "\t\t\t\t<Plugin name=\"" << name << "\" version=\"1.0\">\n";
    for (const auto& [attribute, value] : settings) {
        out << "\t\t\t\t\t<Attribute name=\"" << attribute << "\" value=\"" << value << "\"/>\n";
    }
    out << "\t\t\t\t</Plugin>\n";
}

void writePlugins(ConfigWriter& out, const std::map<std::wstring, SWSettings>& plugins) {
    if (plugins.empty()) return;
    out << "\t\t\t<Plugins>\n";
    for (const auto& [name, settings] : plugins) writePlugin(out, name, settings);
    out << "\t\t\t</Plugins>\n";
}

bool writeConfig(ZAVSwCtx* context, FILE* file) {
    ConfigWriter out(context, file);
    for (const char* const text : kConfigFrameHead) out << text;
    out << "\t\t<XSE version=\"1.0\">\n";
    writeVariables(out, context->variables);
    writePlugins(out, context->pluginConfigs);
    out << "\t\t</XSE>\n";
    for (const char* const text : kConfigFrameTail) out << text;
    return out.good();
}

}  // namespace

int SW_CreateConfigFile(ZAVSwCtx* context, std::wstring& configFile) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    ZAVlog& log = context->logger();
    const int named = context->tmpDir->getTmpFile(configFile, L"cfg_", L".xml");
    log.traceMAX("SW_CreateConfigFile", "Creating a config file [%S]", configFile.c_str());
    if (named != 0) {
        context->failure = context->tmpDir->failureReason();
        return ZAV_ERROR_SW_CONFIG;
    }
    constexpr const char* kFunction = "SW_CreateConfigFile()";
    const WriteResult written = writeNewFile(
        configFile, [context](FILE* file) { return writeConfig(context, file); }, context->failure);
    if (written != WriteResult::kFailed) return ZAV_SUCCESS;
    log.traceMIN(kFunction, "Error during write [%S]", configFile.c_str());
    return ZAV_ERROR_SW_CONFIG;
}

bool SW_writeData(ZAVSwCtx* /*context*/, FILE* stream, const char* text) {
    if (text == nullptr) return false;
    const std::size_t length = std::strlen(text);
    return std::fwrite(text, 1, length, stream) == length;
}

bool SW_writeData(ZAVSwCtx* context, FILE* stream, const wchar_t* text) {
    return text != nullptr && SW_writeData(context, stream, kest::narrow(text).c_str());
}

}  // namespace zav
