#pragma once

#include <vector>

#include "kest/Malloced.h"

namespace zav {

// A variable of a result. Both texts are NUL-terminated and belong to the context (see SWTexts).
struct SWVariable {
    const wchar_t* name;
    const wchar_t* value;
};

}  // namespace zav

// One matched signature: made by the parser, owned by its context, opaque to hosts. Its texts are
// NUL-terminated and belong to the context too.
struct ZAVSwResult {
    // Takes variables in document order: sorted by name, and of those with one name the last one.
    void setVariables(const std::vector<zav::SWVariable>& inOrder);

    // Makes variableNames, once the variables are complete. Throws std::bad_alloc.
    void generateVariablesNames();

    // Null when there is no variable of that name.
    const wchar_t* findValue(const wchar_t* variable) const;

    const wchar_t* guid = L"";
    const wchar_t* name = L"";
    const wchar_t* metadata = L"";
    std::vector<zav::SWVariable> variables;
    kest::Malloced<const wchar_t*> variableNames;  // null without variables
    ZAVSwResult* nextOfGuid = nullptr;  // the next result with the same identifier; set by SWGuidIndex
};
