// The getters for the results of the last scan. Each lists its checks in order. The orders and the levels of the messages
// differ between getters, and hosts rely on them.
#include <cwchar>

#include "core/Guard.h"
#include "hw/ZAVHwCtx.h"

namespace zav {

namespace {

bool isEnabled(const ZAVHwCtx* context, int groupId) {
    return context->groupEnabled.at(static_cast<std::size_t>(groupId)) == 1;
}

int getGroupName(ZAVHwCtx* context, int groupId, const wchar_t** name) {
    if (!isGroupId(groupId)) return ZAV_ERROR_HW_GROUP;
    context->logger().traceMAX("ZAV_hw_get_group_name", "Retrieving group id [%d]", groupId);
    const HWGroup* const group = findGroup(groupId);
    if (group == nullptr) return ZAV_ERROR_HW_GROUP;
    if (name == nullptr) return ZAV_ERROR_HW_POINTER;
    *name = group->xmlName;
    return ZAV_SUCCESS;
}

int getGroupInstances(ZAVHwCtx* context, int groupId, int* count) {
    constexpr const char* kFunction = "ZAV_hw_get_group_instances";
    ZAVlog& log = context->logger();
    if (count == nullptr) return ZAV_ERROR_HW_POINTER;
    if (context->returnCode != 0) return ZAV_ERROR_HW_NO_SCAN;
    log.traceMAX(kFunction, "Retrieving data for group [%d]", groupId);
    if (!isGroupId(groupId)) {
        log.traceMAX(kFunction, "Wrong group id [%d]", groupId);
        return ZAV_ERROR_HW_GROUP;
    }
    if (!isEnabled(context, groupId)) {
        log.traceMIN(kFunction, "Wrong group id [%d] - group not enabled", groupId);
        return ZAV_ERROR_HW_GROUP_DISABLED;
    }
    const int size = static_cast<int>(context->tables.count(groupId));
    log.traceMAX(kFunction, "Size of group [%d] = [%d]", groupId, size);
    *count = size;
    return ZAV_SUCCESS;
}

int getFields(ZAVHwCtx* context, int groupId, int instance, const wchar_t*** names, int* count) {
    constexpr const char* kFunction = "ZAV_hw_get_fields";
    ZAVlog& log = context->logger();
    // Hosts match this message byte for byte, both blanks included.
    log.traceMAX(kFunction, "Retrieving fields  from group [%d] instance [%d]", groupId, instance);
    if (names == nullptr || count == nullptr) return ZAV_ERROR_HW_POINTER;
    if (context->returnCode != 0) {
        log.traceMIN(kFunction, "Wrong returncode of previous scan [%d]", context->returnCode);
        return ZAV_ERROR_HW_NO_SCAN;
    }
    if (!isGroupId(groupId)) {
        log.traceMIN(kFunction, "Wrong group [%d]", groupId);
        return ZAV_ERROR_HW_GROUP;
    }
    if (!isEnabled(context, groupId)) {
        log.traceMIN(kFunction, "Wrong group [%d] - group not enabled", groupId);
        return ZAV_ERROR_HW_GROUP_DISABLED;
    }
    const HWTables::Row* const found = context->tables.find(groupId, instance);
    if (found == nullptr) {
        log.traceMIN(kFunction, "Wrong instance [%d]", instance);
        return ZAV_ERROR_HW_INSTANCE;
    }
    const int size = static_cast<int>(found->size());
    log.traceMAX(kFunction, "Retrieved %d fields", size);
    *names = HWTables::nameArray(*found);
    *count = size;
    return ZAV_SUCCESS;
}

// The index of the first field of this name; the number of fields if there is none.
std::size_t findField(const HWTables::Row& row, const wchar_t* name) {
    std::size_t index = 0;
    while (index < row.size() && std::wcscmp((*row.names)[index], name) != 0) ++index;
    return index;
}

int getValue(ZAVHwCtx* context, int groupId, int instance, const wchar_t* field, const wchar_t** value) {
    constexpr const char* kFunction = "ZAV_hw_get_value";
    ZAVlog& log = context->logger();
    if (value == nullptr || field == nullptr) return ZAV_ERROR_HW_POINTER;
    log.traceMAX(kFunction, "Retrieving field [%S] from group [%d] instance [%d]", field, groupId, instance);
    if (context->returnCode != 0) return ZAV_ERROR_HW_NO_SCAN;
    if (!isGroupId(groupId)) {
        log.traceMAX(kFunction, "No such group [%d]", groupId);
        return ZAV_ERROR_HW_GROUP;
    }
    if (!isEnabled(context, groupId)) {
        log.traceMAX(kFunction, "Wrong group [%d] - group not enabled", groupId);
        return ZAV_ERROR_HW_GROUP_DISABLED;
    }
    const HWTables::Row* const row = context->tables.find(groupId, instance);
    if (row == nullptr) {
        log.traceMAX(kFunction, "Wrong instance [%d] for group [%d]", instance, groupId);
        return ZAV_ERROR_HW_INSTANCE;
    }
    const std::size_t found = findField(*row, field);
    if (found == row->size()) {
        log.traceMID(kFunction, "Field not found [%S]", field);
        return ZAV_ERROR_HW_FIELD;
    }
    // Hosts match this message byte for byte, spelling included.
    const wchar_t* const text = tessa::TextStore::wide(row->values[found]);
    log.traceMAX(kFunction, "Filed [%S] found with value [%S]", (*row->names)[found], text);
    *value = text;
    return ZAV_SUCCESS;
}

}  // namespace
}  // namespace zav

int ZAV_hw_get_returncode(ZAVHwCtx* context, int* returnCode) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (returnCode == nullptr) return ZAV_ERROR_HW_POINTER;
    return zav::guarded([&] {
        *returnCode = context->returnCode;
        return ZAV_SUCCESS;
    });
}

int ZAV_hw_get_group_name(ZAVHwCtx* context, int groupId, const wchar_t** name) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getGroupName(context, groupId, name); });
}

int ZAV_hw_get_group_instances(ZAVHwCtx* context, int groupId, int* count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getGroupInstances(context, groupId, count); });
}

int ZAV_hw_get_fields(ZAVHwCtx* context, int groupId, int instance, const wchar_t*** names, int* count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getFields(context, groupId, instance, names, count); });
}

int ZAV_hw_get_value(ZAVHwCtx* context, int groupId, int instance, const wchar_t* field,
                     const wchar_t** value) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([&] { return zav::getValue(context, groupId, instance, field, value); });
}
