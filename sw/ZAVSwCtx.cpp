#include "sw/ZAVSwCtx.h"

#include <algorithm>

#include "core/Guard.h"

namespace zav {

namespace {

constexpr int kSoftwareComponent = 4;
// Not quite the function's name; hosts match it byte for byte.
constexpr const char* kSetVariable = "ZAV_sw_setopt_variables";
constexpr const char* kSetConfig = "ZAV_sw_setopt_config";

int initialise(ZAVCtx* library, ZAVlogCallback callback, void* userData, ZAVSwCtx** contextOut) {
    auto context = std::make_unique<ZAVSwCtx>();
    context->library = library;
    context->installDir = library->homeDir;
    context->log = std::make_unique<ZAVlog>(kSoftwareComponent, callback, userData);
    ZAVlog& log = context->logger();
    context->tmpDir = std::make_unique<TemporaryDir>(&log, library->tempDir->getBasePath());
    if (context->tmpDir->init(L"quorvis") != 0) {
        log.traceMAX("ZAV_sw_init", "Can't create temporary DIR: %S", context->tmpDir->parentPath().c_str());
    }
    *contextOut = context.release();
    return ZAV_SUCCESS;
}

int refuseNull(const ZAVSwCtx* context, const char* function) {
    context->logger().traceMIN(function, "Error: some of the attributes are NULL");
    return ZAV_ERROR_OPTION;
}

int setVariable(ZAVSwCtx* context, const wchar_t* name, const wchar_t* value, const wchar_t* scope) {
    context->variables.insert_or_assign(name, SWPreset{value, scope});
    context->returnCode = -1;
    context->logger().traceMAX(kSetVariable, "Variable [%S] set with value [%S] for scope [%S]", name, value,
                               scope);
    return ZAV_SUCCESS;
}

// Adds a new plug-in together with its setting, so that none is left without settings when memory runs out.
void addSetting(ZAVSwCtx* context, const wchar_t* plugin, SWSettings::value_type setting) {
    const auto known = context->pluginConfigs.find(plugin);
    if (known != context->pluginConfigs.end()) {
        known->second.push_back(std::move(setting));
    } else {
        context->pluginConfigs.emplace(plugin, SWSettings{std::move(setting)});
    }
}

int setConfig(ZAVSwCtx* context, const wchar_t* plugin, const wchar_t* attribute, const wchar_t* value) {
    addSetting(context, plugin, {attribute, value});
    context->returnCode = -1;
    context->logger().traceMIN(kSetConfig, "Plugin [%S] config set [%S] = [%S]", plugin, attribute, value);
    return ZAV_SUCCESS;
}

// Releases everything even if the callback throws.
int release(ZAVSwCtx* context) {
    const std::unique_ptr<ZAVSwCtx> owner(context);
    const int announced =
        catchAll([context] { context->logger().traceMAX("ZAV_sw_free", "Deleting context"); });
    int told = ZAV_SUCCESS;
    if (context->tmpDir != nullptr) {
        context->tmpDir->deleteFiles(true);
        told = context->tmpDir->close();
        context->tmpDir.reset();
    }
    context->log.reset();
    SW_deleteResults(context);
    return std::max(announced, told);
}

}  // namespace

void SW_deleteResults(ZAVSwCtx* context) {
    if (context == nullptr) return;
    context->results.clear();
    context->resultsArray.reset();
    context->guidResults.clear();
    context->returnCode = -1;
    context->warnings.clear();
    context->warningsArray.reset();
    context->texts.documents.clear();
    context->texts.metadata.clear();
}

}  // namespace zav

int ZAV_sw_init(ZAVCtx* library, ZAVlogCallback callback, void* userData, ZAVSwCtx** context) {
    if (library == nullptr) return ZAV_ERROR_CONTEXT;
    if (context == nullptr) return ZAV_ERROR_SW_POINTER;
    const int code = zav::guarded([&] { return zav::initialise(library, callback, userData, context); });
    if (code != ZAV_SUCCESS) *context = nullptr;
    return code;
}

int ZAV_sw_setopt_variable(ZAVSwCtx* context, const wchar_t* name, const wchar_t* value,
                           const wchar_t* scope) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    const bool complete = name != nullptr && value != nullptr && scope != nullptr;
    return zav::guarded([&] {
        return complete ? zav::setVariable(context, name, value, scope)
                        : zav::refuseNull(context, zav::kSetVariable);
    });
}

int ZAV_sw_setopt_config(ZAVSwCtx* context, const wchar_t* plugin, const wchar_t* attribute,
                         const wchar_t* value) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    const bool complete = plugin != nullptr && attribute != nullptr && value != nullptr;
    return zav::guarded([&] {
        return complete ? zav::setConfig(context, plugin, attribute, value)
                        : zav::refuseNull(context, zav::kSetConfig);
    });
}

int ZAV_sw_free(ZAVSwCtx* context) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([context] { return zav::release(context); });
}
