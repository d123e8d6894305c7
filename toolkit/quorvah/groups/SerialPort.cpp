#include <array>
#include <charconv>
#include <string>

#include "schema/groups/SerialPort.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

const std::string kTerminals = "/sys/class/tty/";

// The kernel's numbers for the kinds of UART.
constexpr std::array<std::string_view, 33> kTypes = {"",
                                                     "8250",
                                                     "16450",
                                                     "16550",
                                                     "16550A",
                                                     "Cirrus",
                                                     "16650",
                                                     "16650V2",
                                                     "16750",
                                                     "Startech",
                                                     "16C950/954",
                                                     "16654",
                                                     "16850",
                                                     "RSA",
                                                     "NS16550A",
                                                     "XScale",
                                                     "RM9000",
                                                     "OCTEON",
                                                     "AR7",
                                                     "U6_16550A",
                                                     "Tegra",
                                                     "XR17D15X",
                                                     "LPC3220",
                                                     "8250 CIR",
                                                     "XR17V35X",
                                                     "TruManage",
                                                     "Altera 16550 FIFO32",
                                                     "Altera 16550 FIFO64",
                                                     "Altera 16550 FIFO128",
                                                     "RT2880",
                                                     "16550A FSL64",
                                                     "PXA",
                                                     "PL011"};

// The number after "0x"; 0 if the file has another form.
std::uint64_t hexNumber(const std::string& line) {
    std::uint64_t number = 0;
    if (!line.starts_with("0x") && !line.starts_with("0X")) return 0;
    const char* const end = line.data() + line.size();
    const auto [last, error] = std::from_chars(line.data() + 2, end, number, 16);
    return error == std::errc() && last == end ? number : 0;
}

std::string addressOf(const Root& root, const std::string& directory) {
    const std::uint64_t port = hexNumber(root.readLine(directory + "port"));
    if (port != 0) return hexDigits(port, port > 0xFFFF ? 8 : 4);
    const std::uint64_t memory = hexNumber(root.readLine(directory + "iomem_base"));
    return memory == 0 ? std::string() : hexDigits(memory, 16);
}

// Newer kernels put devices of their own between the port and the device that it belongs to.
std::string driverOf(const Root& root, const std::string& directory) {
    std::string path = directory + "device/";
    for (int i = 0; i < 3; ++i) {
        std::string driver = root.linkName(path + "driver");
        if (!driver.empty() && driver != "port" && driver != "ctrl") return driver;
        path += "../";
    }
    return {};
}

// The port's own numbers. Drivers of USB adapters do not have them.
void setUart(const Root& root, const std::string& directory, Instance& port) {
    constexpr std::uint64_t kClocksPerBit = 16;
    const std::uint64_t clock = root.readCount(directory + "uartclk").value_or(0);
    if (clock >= kClocksPerBit) port.set("MaxBaudRate", clock / kClocksPerBit);
    const Count type = root.readCount(directory + "type");
    if (type && *type < kTypes.size()) port.set("UartType", kTypes[*type]);
    port.set("IoAddress", addressOf(root, directory));
    const Count irq = root.readCount(directory + "irq");
    if (irq.value_or(0) != 0) port.set("Irq", irq);
}

// Whether hardware is behind the terminal.
bool isPort(const Root& root, const std::string& name) {
    const std::string directory = kTerminals + name + "/";
    if (root.readLink(directory + "device").empty()) return false;
    // The driver offers more ports than the machine has. An unused one has the type 0.
    return root.readLine(directory + "type") != "0";
}

constexpr const char* kSources[] = {"/sys/class"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    for (const std::string& name : root.list(kTerminals)) {
        if (!isPort(root, name)) continue;
        const std::string directory = kTerminals + name + "/";
        Instance& port = data.add("/dev/" + name);
        const std::string place = root.readLink(kTerminals + name);
        const std::string usb(usbDeviceIn(place));
        std::string product;
        if (!usb.empty()) product = root.readLine("/sys/bus/usb/devices/" + usb + "/product");
        port.set("Name", product.empty() ? name : product);
        setUart(root, directory, port);
        port.set("BusAddress", usb.empty() ? std::string(pciAddressIn(place)) : usb);
        port.set("Driver", driverOf(root, directory));
    }
}

}  // namespace

constexpr Group kSerialPort{.displayName = "Serial Port",
                            .xmlName = "SerialPort",
                            .fields = schema::kSerialPort.fields,
                            .gather = gather,
                            .sources = kSources};

}  // namespace toolkit::quorvah
