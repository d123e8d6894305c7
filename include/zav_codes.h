/* SPDX-License-Identifier: Apache-2.0
 *
 * zav_codes.h: the meaning of the return codes of zav.h, as text for logs and messages. The function is
 * defined in this header, so libzav does not export it. */
#ifndef ZAV_CODES_H
#define ZAV_CODES_H

#include "zav.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The meaning of a return code in English, without capital letter and full stop; "unknown return code" for
 * any other number. Static text; never null.
 *     int code = ZAV_hw_run(hw);
 *     if (code != ZAV_SUCCESS) fprintf(stderr, "inventory: %s (%d)\n", ZAV_code_text(code), code); */
static inline const char* ZAV_code_text(int code) {
    switch (code) {
        case ZAV_SUCCESS:
            return "success";
        case ZAV_ERROR_EXPLOITER:
            return "the product's name is null";
        case ZAV_ERROR_CONTEXT:
            return "the handle or context is null";
        case ZAV_ERROR_LOGGER:
            return "the logger could not be made";
        case ZAV_ERROR_MEMORY:
            return "out of memory, or the logging callback threw";
        case ZAV_ERROR_WORKSPACE:
            return "no temporary directory or file name is available";
        case ZAV_ERROR_OPTION:
            return "the option's value is not allowed";
        case ZAV_ERROR_HW_GROUP:
            return "there is no such hardware group";
        case ZAV_ERROR_HW_CONFIG:
            return "the hardware scanner's configuration file could not be written";
        case ZAV_ERROR_HW_SCANNER:
            return "the hardware scanner could not be started, or it failed";
        case ZAV_ERROR_HW_OUTPUT:
            return "the hardware scanner's output file is missing or malformed";
        case ZAV_ERROR_HW_INSTANCE:
            return "the hardware group has no such instance";
        case ZAV_ERROR_HW_FIELD:
            return "the instance has no such field";
        case ZAV_ERROR_HW_NO_SCAN:
            return "there is no valid hardware scan";
        case ZAV_ERROR_HW_GROUP_DISABLED:
            return "the hardware group is not enabled";
        case ZAV_ERROR_HW_POINTER:
            return "a pointer argument of a hardware function is null";
        case ZAV_ERROR_SW_CONFIG:
            return "the software scanner's configuration or signatures file could not be written";
        case ZAV_ERROR_SW_SIGNATURE:
            return "the signature is null, could not be written, or is refused by the scanner";
        case ZAV_ERROR_SW_SCANNER:
            return "the software scanner could not be started, or it failed";
        case ZAV_ERROR_SW_OUTPUT:
            return "the software scanner's output file is missing or malformed";
        case ZAV_ERROR_SW_WARNINGS:
            return "the software scanner's warnings file is missing or malformed";
        case ZAV_ERROR_SW_NO_RESULTS:
            return "there are no valid software results";
        case ZAV_ERROR_SW_RESULT:
            return "the result pointer is null";
        case ZAV_ERROR_SW_VARIABLE:
            return "the variable's name is null, or the result has no such variable";
        case ZAV_ERROR_SW_POINTER:
            return "a pointer argument of a software function is null";
        case ZAV_ERROR_SW_NOT_FOUND:
            return "no software result carries the identifier";
        default:
            return "unknown return code";
    }
}

#ifdef __cplusplus
}
#endif

#endif /* ZAV_CODES_H */
