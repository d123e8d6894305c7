#include <string>

#include "schema/groups/Printer.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CupsPrinters.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxFile = std::size_t{8} << 20;

void setAbilities(const Root& root, const std::string& name, Instance& instance) {
    // A name that is not one of a file leads nowhere.
    if (name.empty() || name.find('/') != std::string::npos) return;
    const std::optional<std::string> ppd = root.read("/etc/cups/ppd/" + name + ".ppd", kMaxFile);
    if (!ppd) return;
    const PrinterAbilities abilities = parsePpd(*ppd);
    if (abilities.horizontalResolution != 0) {
        instance.set("HorizontalResolution", abilities.horizontalResolution);
        instance.set("VerticalResolution", abilities.verticalResolution);
    }
    instance.set("Color", abilities.color);
    instance.set("Duplex", abilities.duplex);
}

constexpr const char* kSources[] = {"/etc"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const std::optional<std::string> configuration = root.read("/etc/cups/printers.conf", kMaxFile);
    if (configuration) {
        for (const CupsPrinter& printer : parsePrinters(*configuration)) {
            context.checkTime();
            Instance& instance = data.add(printer.name);
            instance.set("Description", printer.description);
            instance.set("Location", printer.location);
            instance.set("PrinterStatus", printer.state);
            instance.set("Default", printer.isDefault);
            setAbilities(root, printer.name, instance);
            instance.set("DeviceUri", withoutCredentials(printer.uri));
            instance.set("MakeAndModel", printer.model);
            instance.set("Shared", printer.shared);
        }
        return;
    }
    for (const char* const path : {"/run/cups/printcap", "/etc/printcap"}) {
        const std::string printcap = root.read(path, kMaxFile).value_or("");
        for (const CupsPrinter& printer : parsePrintcap(printcap))
            data.add(printer.name).set("Description", printer.description);
        if (!data.instances().empty()) return;
    }
}

}  // namespace

constexpr Group kPrinter{.displayName = "Printer",
                         .xmlName = "Printer",
                         .fields = schema::kPrinter.fields,
                         .gather = gather,
                         .sources = kSources};

}  // namespace toolkit::quorvah
