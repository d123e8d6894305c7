#include "toolkit/machine/packages/PacmanDesc.h"

#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

struct DescField {
    std::string_view heading;
    std::string_view PacmanPackage::*value;
};

constexpr DescField kFields[] = {
    {"%NAME%", &PacmanPackage::name},
    {"%VERSION%", &PacmanPackage::version},
    {"%ARCH%", &PacmanPackage::architecture},
    {"%PACKAGER%", &PacmanPackage::packager},
    {"%DESC%", &PacmanPackage::description},
    {"%BASE%", &PacmanPackage::base},
    {"%INSTALLDATE%", &PacmanPackage::installDate},
    {"%SIZE%", &PacmanPackage::size},
};

std::string_view* valueUnder(std::string_view heading, PacmanPackage& package) {
    for (const DescField& field : kFields) {
        if (field.heading == heading) return &(package.*field.value);
    }
    return nullptr;
}

}  // namespace

PacmanPackage readPacmanDesc(std::string_view text) {
    PacmanPackage package;
    std::string_view* value = nullptr;
    bool heading = true;  // only behind a blank line; a value may look like one
    std::string_view line;
    while (nextLine(text, line)) {
        if (heading && !line.empty()) {
            value = valueUnder(line, package);
        } else if (value != nullptr && value->empty()) {
            *value = trimmed(line);
        }
        heading = line.empty();
    }
    return package;
}

}  // namespace toolkit
