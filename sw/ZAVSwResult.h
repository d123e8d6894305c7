#pragma once

#include <vector>

#include "kest/Malloced.h"

namespace zav {

// A variable of a result. Both texts are NUL-terminated and owned by the context (see SWTexts).
struct SWVariable {
    const wchar_t* name;
    const char* value;  // UTF-8
};

}  // namespace zav

// A matched signature, owned by its context and opaque to hosts. Its texts are NUL-terminated and owned by the context
// too.
struct ZAVSwResult {
    // Stores variables, given in document order, sorted by name. Of several with the same name the last one is kept.
    void setVariables(const std::vector<zav::SWVariable>& inOrder);

    // Fills variableNames. REQUIRES: the variables are complete. Throws std::bad_alloc.
    void generateVariablesNames();

    // The value of a variable in UTF-8, or null if there is none of that name.
    const char* findValue(const wchar_t* variable) const;

    const char* guid = "";  // UTF-8, like the name
    const char* name = "";
    const wchar_t* metadata = L"";
    std::vector<zav::SWVariable> variables;
    kest::Malloced<const wchar_t*> variableNames;  // null without variables
    ZAVSwResult* nextOfGuid = nullptr;  // the next result with the same identifier; set by SWGuidIndex
};
