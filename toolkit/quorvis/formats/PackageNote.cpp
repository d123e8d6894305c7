// The format is "Package Metadata for Executable Files" of the UAPI group.
#include "toolkit/quorvis/formats/PackageNote.h"

#include <array>

#include "toolkit/quorvis/formats/Records.h"

namespace toolkit::quorvis {

namespace {

struct NoteField {
    const char* key;
    std::string_view value;
};

constexpr std::array<NoteField, 9> kFields = {{
    {"name", "noteName"},
    {"type", "noteType"},
    {"version", "noteVersion"},
    {"architecture", "noteArchitecture"},
    {"os", "noteOs"},
    {"osVersion", "noteOsVersion"},
    {"osCpe", "noteOsCpe"},
    {"appCpe", "noteAppCpe"},
    {"debugInfoUrl", "noteDebugInfoUrl"},
}};

}  // namespace

PackageNote readPackageNote(std::string_view json, bool& whole) {
    whole = true;
    PackageNote note;
    if (json.empty()) return note;
    RecordRequest request;
    request.limit = 1;
    for (const NoteField& field : kFields)
        request.keys.push_back({{{field.key, false}}, false, request.keys.empty()});
    const Records found = readJsonRecords(json, request);
    whole = found.problem.empty();
    if (!whole || found.records.empty()) return note;
    const Record& record = found.records.front();
    note.emplace_back(kFields[0].value, record.items.front());
    for (std::size_t i = 1; i < kFields.size(); ++i) {
        if (record.values[i - 1]) note.emplace_back(kFields.at(i).value, *record.values[i - 1]);
    }
    return note;
}

}  // namespace toolkit::quorvis
