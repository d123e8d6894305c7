// The getters for the results of the last evaluation. Each lists its checks in order. The orders, the messages and the
// function names in the log differ between getters, and hosts rely on them.
#include "core/Guard.h"
#include "sw/ZAVSwCtx.h"

namespace zav {

namespace {

constexpr const char* kGetResults = "ZAV_sw_get_results";

int getResults(ZAVSwCtx* context, ZAVSwResult*** results, int* count) {
    ZAVlog& log = context->logger();
    if (context->returnCode != 0) {
        log.traceMIN(kGetResults, "ERROR: Wrong last return code");
        return ZAV_ERROR_SW_NO_RESULTS;
    }
    if (results == nullptr || count == nullptr) {
        log.traceMAX(kGetResults, "Wrong table pointer");
        return ZAV_ERROR_SW_POINTER;
    }
    const int size = static_cast<int>(context->results.size());
    log.traceMAX(kGetResults, "Requesting all results. Size: %d", size);
    if (size < 1) log.traceMAX(kGetResults, "No results, passing NULL");
    *count = size;
    *results = context->resultsArray.get();
    return ZAV_SUCCESS;
}

int findResult(const ZAVSwCtx* context, const wchar_t* guid, ZAVSwResult** result) {
    if (result == nullptr || guid == nullptr) return ZAV_ERROR_SW_POINTER;
    ZAVSwResult* const first = context->guidResults.first(guid);
    if (first == nullptr) return ZAV_ERROR_SW_NOT_FOUND;
    *result = first;
    return ZAV_SUCCESS;
}

int findResults(ZAVSwCtx* context, const wchar_t* guid, ZAVSwResult*** results, unsigned int* count) {
    constexpr const char* kFunction = "ZAV_sw_find_results_by_guid";
    ZAVlog& log = context->logger();
    if (results == nullptr || count == nullptr) {
        log.traceMAX(kFunction, "Wrong pointer");
        return ZAV_ERROR_SW_POINTER;
    }
    if (guid == nullptr) return ZAV_ERROR_SW_POINTER;
    SWGuidIndex::Entry* const found = context->guidResults.find(guid);
    const bool again = found != nullptr && found->wasRequested;
    log.traceMAX(kFunction, again ? "Using cached results" : "generating new results");
    if (found == nullptr) return ZAV_ERROR_SW_NOT_FOUND;
    found->wasRequested = true;
    *count = found->count;
    *results = found->results;
    return ZAV_SUCCESS;
}

int getValue(const ZAVSwCtx* context, const ZAVSwResult* result, const wchar_t* name, const wchar_t** value) {
    if (context->returnCode != 0) return ZAV_ERROR_SW_NO_RESULTS;
    if (result == nullptr) return ZAV_ERROR_SW_RESULT;
    if (value == nullptr) return ZAV_ERROR_SW_POINTER;
    if (name == nullptr) return ZAV_ERROR_SW_VARIABLE;
    const char* const found = result->findValue(name);
    if (found == nullptr) return ZAV_ERROR_SW_VARIABLE;
    *value = tessa::TextStore::wide(found);
    return ZAV_SUCCESS;
}

int getVariables(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t*** names, int* count) {
    if (context->returnCode != 0) return ZAV_ERROR_SW_NO_RESULTS;
    if (names == nullptr || count == nullptr) return ZAV_ERROR_SW_POINTER;
    if (result == nullptr) return ZAV_ERROR_SW_RESULT;
    const int size = static_cast<int>(result->variables.size());
    context->logger().traceMAX("ZAV_sw_get_variables", "Requesting all variables for result [SIZE: %d]",
                               size);
    *count = size;
    *names = result->variableNames.get();
    return ZAV_SUCCESS;
}

const wchar_t* guidOf(const ZAVSwResult& result) {
    return tessa::TextStore::wide(result.guid);
}

const wchar_t* metadataOf(const ZAVSwResult& result) {
    return result.metadata;
}

// Gets one text of a result. Its message names another getter; hosts match it byte for byte.
int getText(ZAVSwCtx* context, const ZAVSwResult* result, const wchar_t* (*textOf)(const ZAVSwResult&),
            const wchar_t** text) {
    if (context->returnCode != 0) return ZAV_ERROR_SW_NO_RESULTS;
    if (text == nullptr) return ZAV_ERROR_SW_POINTER;
    if (result == nullptr) {
        context->logger().traceMIN(kGetResults, "ERROR: Wrong result");
        return ZAV_ERROR_SW_RESULT;
    }
    *text = textOf(*result);
    return ZAV_SUCCESS;
}

int getWarnings(ZAVSwCtx* context, const wchar_t*** warnings, int* count) {
    constexpr const char* kFunction = "ZAV_sw_get_warnings";
    ZAVlog& log = context->logger();
    log.traceMAX(kFunction, "Retrieving Warnings");
    if (warnings == nullptr || count == nullptr) {
        log.traceMAX(kFunction, "Error: wrong pointer");
        return ZAV_ERROR_SW_POINTER;
    }
    if (context->warningsArray == nullptr) return ZAV_SUCCESS;
    *count = static_cast<int>(context->warnings.size());
    *warnings = context->warningsArray.get();
    return ZAV_SUCCESS;
}

int getReturnCode(ZAVSwCtx* context, int* returnCode) {
    constexpr const char* kFunction = "ZAV_sw_get_returncode";
    ZAVlog& log = context->logger();
    if (returnCode == nullptr) {
        log.traceMAX(kFunction, "Wrong pointer for RC");
        return ZAV_ERROR_SW_POINTER;
    }
    const int code = context->returnCode;
    log.traceMAX(kFunction, "Returning previous rc [%d] [%s]", code, code == 0 ? "TRUE" : "FALSE");
    *returnCode = code;
    return ZAV_SUCCESS;
}

}  // namespace
}  // namespace zav

int ZAV_sw_get_results(ZAVSwCtx* context, ZAVSwResult*** results, int* count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getResults(context, results, count); });
}

int ZAV_sw_find_result_by_guid(ZAVSwCtx* context, const wchar_t* guid, ZAVSwResult** result) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::findResult(context, guid, result); });
}

int ZAV_sw_find_results_by_guid(ZAVSwCtx* context, const wchar_t* guid, ZAVSwResult*** results,
                                unsigned int* count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::findResults(context, guid, results, count); });
}

int ZAV_sw_get_value(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t* name, const wchar_t** value) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getValue(context, result, name, value); });
}

int ZAV_sw_get_variables(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t*** names, int* count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getVariables(context, result, names, count); });
}

int ZAV_sw_get_metadata(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t** metadata) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getText(context, result, zav::metadataOf, metadata); });
}

int ZAV_sw_get_guid(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t** guid) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getText(context, result, zav::guidOf, guid); });
}

int ZAV_sw_get_warnings(ZAVSwCtx* context, const wchar_t*** warnings, int* count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getWarnings(context, warnings, count); });
}

int ZAV_sw_get_returncode(ZAVSwCtx* context, int* returnCode) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getReturnCode(context, returnCode); });
}
