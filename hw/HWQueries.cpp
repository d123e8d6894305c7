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

const std::vector<HWInstance>& instancesOf(const ZAVHwCtx* context, int groupId) {
    return context->groups.at(static_cast<std::size_t>(groupId));
}

// Null when there is no such instance.
const HWInstance* findInstance(const ZAVHwCtx* context, int groupId, int instance) {
    const std::vector<HWInstance>& instances = instancesOf(context, groupId);
    const auto index = static_cast<std::size_t>(instance);
    return instance >= 0 && index < instances.size() ? &instances[index] : nullptr;
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
    const int size = static_cast<int>(instancesOf(context, groupId).size());
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
    const HWInstance* const found = findInstance(context, groupId, instance);
    if (found == nullptr) {
        log.traceMIN(kFunction, "Wrong instance [%d]", instance);
        return ZAV_ERROR_HW_INSTANCE;
    }
    const int size = static_cast<int>(found->fields.size());
    log.traceMAX(kFunction, "Retrieved %d fields", size);
    *names = found->fieldNames.get();
    *count = size;
    return ZAV_SUCCESS;
}

const HWField* findField(const HWInstance& instance, const wchar_t* name) {
    for (const HWField& field : instance.fields) {
        if (std::wcscmp(field.name, name) == 0) return &field;
    }
    return nullptr;
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
    const HWInstance* const fields = findInstance(context, groupId, instance);
    if (fields == nullptr) {
        log.traceMAX(kFunction, "Wrong instance [%d] for group [%d]", instance, groupId);
        return ZAV_ERROR_HW_INSTANCE;
    }
    const HWField* const found = findField(*fields, field);
    if (found == nullptr) {
        log.traceMID(kFunction, "Field not found [%S]", field);
        return ZAV_ERROR_HW_FIELD;
    }
    // Hosts match this message byte for byte, spelling included.
    log.traceMAX(kFunction, "Filed [%S] found with value [%S]", found->name, found->value);
    *value = found->value;
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
