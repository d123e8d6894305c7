#include <string>

#include "schema/groups/Monitor.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/DisplayMakers.h"
#include "toolkit/quorvah/sources/Edid.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

const std::string kCards = "/sys/class/drm/";

void setKnown(Instance& monitor, const char* field, unsigned number) {
    if (number != 0) monitor.set(field, number);
}

void setEdid(const GatheringContext& context, const Edid& edid, const DisplayMakers& makers,
             Instance& monitor) {
    monitor.set("Name", context.firmwareText(edid.name));
    monitor.set("Manufacturer", makers.name(edid.maker));
    monitor.set("SerialNumber", context.firmwareText(edid.serialNumber));
    setKnown(monitor, "HorizontalResolution", edid.horizontalPixels);
    setKnown(monitor, "VerticalResolution", edid.verticalPixels);
    monitor.set("DisplayType", edid.digital ? "Digital" : "Analog");
    monitor.set("ManufacturerId", edid.maker);
    monitor.set("ProductCode", edid.product);
    setKnown(monitor, "WeekOfManufacture", edid.week);
    setKnown(monitor, "YearOfManufacture", edid.year);
    setKnown(monitor, "ImageWidth", edid.width);
    setKnown(monitor, "ImageHeight", edid.height);
    setKnown(monitor, "Diagonal", edid.diagonal);
    monitor.set("EdidVersion", edid.version);
}

std::string hexText(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes) digits += hexDigits(static_cast<unsigned char>(byte), 2);
    return digits;
}

constexpr const char* kSources[] = {"/sys/class"};

void gather(GatheringContext& context, GroupData& data) {
    constexpr std::size_t kMaxEdid = 32768;  // 256 blocks
    const Root& root = context.root();
    const DisplayMakers makers(context.options());
    bool connectors = false;
    for (const std::string& name : root.list(kCards)) {
        if (!name.starts_with("card") || name.find('-') == std::string::npos) continue;
        connectors = true;
        const std::string directory = kCards + name + "/";
        if (root.readLine(directory + "status") != "connected") continue;
        Instance& monitor = data.add(name);
        const std::string bytes = root.read(directory + "edid", kMaxEdid).value_or("");
        const std::optional<Edid> edid = readEdid(bytes);
        if (!edid) continue;
        setEdid(context, *edid, makers, monitor);
        monitor.set("Edid", hexText(bytes));
    }
    // Without a driver that knows its connectors, nothing is known about displays.
    if (!connectors && root.isDirectory("/sys/class")) data.notApplicable("no-driver");
}

}  // namespace

constexpr Group kMonitor{.displayName = "Monitor",
                         .xmlName = "Monitor",
                         .fields = schema::kMonitor.fields,
                         .gather = gather,
                         .sources = kSources};

}  // namespace toolkit::quorvah
