#include "cli/scan/ErrorMessages.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "cli/system/ChildProgram.h"
#include "cli/system/Failure.h"
#include "include/zav.h"

namespace zavcli {

namespace {

constexpr std::array<std::pair<int, std::string_view>, 26> kMessages{{
    {ZAV_SUCCESS, "success"},
    {ZAV_ERROR_EXPLOITER, "the library was opened without a product name, or its handle is no longer valid"},
    {ZAV_ERROR_CONTEXT, "the library was given no handle"},
    {ZAV_ERROR_LOGGER, "the library could not make its logger"},
    {ZAV_ERROR_MEMORY, "memory ran out"},
    {ZAV_ERROR_WORKSPACE,
     "no temporary directory could be made; TEMP or TMP can name another place than /tmp"},
    {ZAV_ERROR_OPTION, "an option has a value that is not allowed"},
    {ZAV_ERROR_HW_GROUP, "there is no such hardware group"},
    {ZAV_ERROR_HW_CONFIG,
     "the scanner's configuration file could not be written; is the temporary directory full?"},
    {ZAV_ERROR_HW_SCANNER, "the hardware scanner could not be started, or it failed"},
    {ZAV_ERROR_HW_OUTPUT, "the hardware scanner wrote no valid inventory"},
    {ZAV_ERROR_HW_INSTANCE, "the hardware group has no such instance"},
    {ZAV_ERROR_HW_FIELD, "the instance has no such field"},
    {ZAV_ERROR_HW_NO_SCAN, "there is no valid hardware scan"},
    {ZAV_ERROR_HW_GROUP_DISABLED, "the hardware group was not requested"},
    {ZAV_ERROR_HW_POINTER, "a hardware query was called without a pointer for its result"},
    {ZAV_ERROR_SW_CONFIG,
     "the software scanner's files could not be written; is the temporary directory full?"},
    {ZAV_ERROR_SW_SIGNATURE,
     "the software signatures are missing, could not be written, or are refused by the scanner; 'zav sw "
     "--check FILE' shows the errors in a file"},
    {ZAV_ERROR_SW_SCANNER,
     "the software scanner could not be started, or it failed; 'zav doctor' tests it, and -vv shows its "
     "output"},
    {ZAV_ERROR_SW_OUTPUT,
     "the software scanner wrote no valid results; is the temporary directory full, or does the scanner "
     "belong to another product?"},
    {ZAV_ERROR_SW_WARNINGS,
     "the software scanner wrote no valid list of warnings, so it is unknown what it could not examine"},
    {ZAV_ERROR_SW_NO_RESULTS, "there are no valid software results; evaluate signatures first"},
    {ZAV_ERROR_SW_RESULT, "a software query names no result"},
    {ZAV_ERROR_SW_VARIABLE, "the software result has no such variable"},
    {ZAV_ERROR_SW_POINTER, "a software query was called without a pointer for its result"},
    {ZAV_ERROR_SW_NOT_FOUND, "no software result has that identifier"},
}};

}  // namespace

std::string_view errorMessage(int code) {
    const auto* found = std::find_if(kMessages.begin(), kMessages.end(),
                                     [code](const auto& entry) { return entry.first == code; });
    return found == kMessages.end() ? "the library returned a code that this command does not know"
                                    : found->second;
}

void requireSuccess(int code) {
    if (code != ZAV_SUCCESS) throw Failure(kExitFailed, std::string(errorMessage(code)));
}

std::string describeScannerExit(int status, const std::string& scanner) {
    if (status > kSignalStatusBase)
        return fmt::format("signal {} ended the scanner {}", status - kSignalStatusBase, scanner);
    if (status > 0) return fmt::format("the scanner {} failed with status {}", scanner, status);
    return fmt::format("the scanner {} could not be started", scanner);
}

}  // namespace zavcli
