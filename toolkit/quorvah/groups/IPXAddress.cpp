#include <string>

#include "schema/groups/IPXAddress.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

// Lower-case hexadecimal digits; empty if there are other characters.
std::string addressOf(std::string_view word) {
    std::string digits;
    for (const char c : word) digits += c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    return digits.find_first_not_of("0123456789abcdef") == std::string::npos ? digits : std::string();
}

// "0000ABCD   00A0C9112233  Yes      eth0       802.3"
void addInterface(std::string_view line, GroupData& data) {
    const std::string network = addressOf(nextWord(line));
    const std::string node = addressOf(nextWord(line));
    if (network.empty() || node.empty()) return;
    nextWord(line);  // whether it is the primary interface
    Instance& address = data.add(network);
    address.set("NodeAddress", node);
    address.set("DeviceName", nextWord(line));
    address.set("FrameType", nextWord(line));
}

constexpr const char* kSources[] = {"/proc/net"};

// Linux has no IPX since version 4.18.
void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    std::optional<std::string> table = root.read("/proc/net/ipx/interface");
    if (!table) table = root.read("/proc/net/ipx_interface");
    if (!table) {
        if (root.isDirectory("/proc/net")) data.notApplicable("no-ipx");
        return;
    }
    std::string_view rest = *table;
    std::string_view line;
    nextLine(rest, line);  // the heading
    while (nextLine(rest, line)) addInterface(line, data);
}

}  // namespace

constexpr Group kIPXAddress{.displayName = "IPX Address",
                            .xmlName = "IPXAddress",
                            .fields = schema::kIPXAddress.fields,
                            .gather = gather,
                            .sources = kSources};

}  // namespace toolkit::quorvah
