// What the hardware scanner decodes of a machine: disks, firmware, the kernel's answers and the files of other programs.
// The first byte of the input names the decoder, '2' the first one; the rest is what it is given. Each ends with values within their
// documented bounds.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/sources/AtaIdentity.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/CpuList.h"
#include "toolkit/quorvah/sources/DeviceIdsFile.h"
#include "toolkit/quorvah/sources/FileSystemIdentity.h"
#include "toolkit/quorvah/sources/IpAddressText.h"
#include "toolkit/quorvah/sources/Netlink.h"
#include "toolkit/quorvah/sources/PartitionTable.h"
#include "toolkit/quorvah/sources/ProcNet.h"
#include "toolkit/quorvah/sources/SmbiosMemory.h"
#include "toolkit/quorvah/sources/SmbiosProcessor.h"
#include "toolkit/quorvah/sources/TimeZone.h"
#include "toolkit/quorvah/sources/UdevData.h"
#include "toolkit/quorvah/sources/UsbAttributes.h"
#include "toolkit/quorvah/sources/Utmp.h"

namespace {

namespace quorvah = toolkit::quorvah;

void must(bool holds) {
    if (!holds) std::abort();
}

void mustLieIn(std::string_view part, std::string_view whole) {
    must(part.empty() || (part.data() >= whole.data() && part.end() <= whole.end()));
}

void readPartitions(std::string_view disk) {
    const auto read = [disk](std::uint64_t offset, std::size_t size) {
        return offset < disk.size() ? std::string(disk.substr(offset, size)) : std::string();
    };
    constexpr std::size_t kMaxEntries = 1024;
    for (const unsigned blockSize : {512U, 4096U}) {
        const quorvah::PartitionTable table = quorvah::readPartitionTable(read, blockSize);
        must(table.entries.size() <= kMaxEntries && (!table.type.empty() || table.entries.empty()));
        for (const quorvah::PartitionEntry& entry : table.entries) {
            must(entry.number >= 1 && entry.type.size() == (table.type == "gpt" ? 36 : 2));
            must(entry.name.find('\0') == std::string::npos);
        }
    }
}

void readSmbios(std::string_view table) {
    const quorvah::Smbios smbios{std::string(table)};
    std::size_t size = 0;
    for (const quorvah::SmbiosStructure& structure : smbios.structures()) {
        size += structure.formatted.size();
        for (const std::string_view string : structure.strings) {
            must(!string.empty());
            size += string.size() + 1;
        }
        for (std::size_t offset = 0; offset < 300; offset += 7) structure.string(offset);
        quorvah::moduleSize(structure);
    }
    must(size <= table.size());
    quorvah::readSmbiosMemory(smbios);
    must(quorvah::readSmbiosProcessors(smbios).size() <= smbios.structures().size());
}

void readNetlink(std::string_view block) {
    quorvah::NetlinkAnswer answer;
    quorvah::readNetlinkBlock(block, answer);
    must(answer.addresses.size() + answer.gateways.size() <= block.size() / 8);
    for (const quorvah::NetlinkAddress& address : answer.addresses) {
        must(address.label.find('\0') == std::string::npos);
        must(!quorvah::ipv6Text(address.address).empty());
        must(!quorvah::ipv4Text(quorvah::ipv4Of(address.address)).empty());
    }
}

void readIds(std::string_view text) {
    quorvah::DeviceIdsFile ids(text);
    for (const std::string_view found :
         {ids.vendor("8086"), ids.device("8086", "1237"), ids.subsystem("8086", "1237", "1af4", "1100"),
          ids.baseClass("03"), ids.subclass("03", "00"), ids.version(), ids.vendor(""), ids.vendor("8086")})
        mustLieIn(found, text);
}

void readUdev(std::string_view text) {
    const std::string_view value = quorvah::udevProperty(text, "ID_FS_LABEL_ENC");
    mustLieIn(value, text);
    must(quorvah::withoutHexEscapes(value).size() <= value.size());
}

void readUtmp(std::string_view utmp) {
    must(quorvah::userSessions(utmp).size() <= utmp.size() / 384);
}

// A tree that holds nothing but the file of its time zone.
class ZoneTree {
  public:
    ZoneTree() {
        std::string path = std::filesystem::temp_directory_path() / "zavfuzz-XXXXXX";
        must(::mkdtemp(path.data()) != nullptr);
        path_ = path;
        std::filesystem::create_directory(path_ / "etc");
        root_ = std::make_unique<toolkit::Root>(path_);
    }
    ~ZoneTree() { std::filesystem::remove_all(path_); }
    ZoneTree(const ZoneTree&) = delete;
    ZoneTree& operator=(const ZoneTree&) = delete;

    const toolkit::Root& with(std::string_view zone) {
        std::ofstream(path_ / "etc/localtime", std::ios::binary) << zone;
        return *root_;
    }

  private:
    std::filesystem::path path_;
    std::unique_ptr<toolkit::Root> root_;
};

void readZone(std::string_view file) {
    static ZoneTree tree;
    const toolkit::Root& root = tree.with(file);
    constexpr std::array<std::int64_t, 5> kTimes = {0, 1700000000, INT64_MIN, INT64_MAX, 4102444800};
    for (const std::int64_t time : kTimes) {
        const auto offset = quorvah::zoneOffset(root, time);
        must(!offset || (file.starts_with("TZif") && std::abs(offset->minutes) <= 26 * 60));
    }
}

void readCpus(std::string_view text) {
    const quorvah::CpuInfo info{std::string(text)};
    for (const int cpu : info.cpus()) {
        must(cpu >= 0 && info.lists(cpu));
        must(info.value(cpu, "model name").size() <= text.size());
    }
    info.architecture();
    const std::vector<int> list = quorvah::readCpuList(text);
    must(std::ranges::adjacent_find(list, std::ranges::greater_equal()) == list.end());
    must(list.empty() || list.front() >= 0);
}

void readProcNet(std::string_view text) {
    for (const quorvah::FibTrieAddress& address : quorvah::readFibTrie(text))
        must(address.prefixLength >= -1 && address.prefixLength <= 32);
    for (const quorvah::Ipv4Route& route : quorvah::readRoutes(text)) {
        must(quorvah::prefixLengthOf(route.mask) >= -1);
        must(route.interface.size() <= text.size());
    }
    for (const quorvah::Inet6Address& address : quorvah::readIfInet6(text))
        must(!quorvah::ipv6Text(address.address).empty());
    quorvah::readIpv6DefaultRoutes(text);
}

void readDeviceTexts(std::string_view text) {
    quorvah::readPciAddress(text);
    mustLieIn(quorvah::pciAddressIn(text), text);
    mustLieIn(quorvah::usbDeviceIn(text), text);
    quorvah::usbRelease(text);
    quorvah::usbSpeed(text);
    quorvah::usbPower(text);
    std::uint32_t address = 0;
    if (quorvah::readIpv4(text, address)) must(quorvah::ipv4Text(address) == text.substr(0, text.find('\0')));
}

void readAta(std::string_view bytes) {
    for (const auto& identity : {quorvah::readAtaIdentity(bytes), quorvah::ataIdentityOfPage(bytes),
                                 quorvah::ataIdentityOfName(bytes)}) {
        if (!identity) continue;
        must(identity->model.size() <= 40 && identity->firmware.size() <= 8);
        must(identity->serial.size() <= bytes.size());
        must(!identity->rotation || *identity->rotation <= 0xFFFE);
    }
}

// A device in memory, because the library reads an open file.
void readSuperblock(std::string_view bytes) {
    const kest::Descriptor device(::memfd_create("device", MFD_CLOEXEC));
    must(device.isOpen());
    for (std::string_view rest = bytes; !rest.empty();) {
        const ssize_t written = ::write(device.number(), rest.data(), rest.size());
        must(written > 0);
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    const auto identity = quorvah::readFileSystemIdentity(device);
    must(!identity || !identity->type.empty());
}

void readMasks(std::string_view text) {
    const std::vector<int> mask = quorvah::readCpuMask(text);
    must(std::ranges::adjacent_find(mask, std::ranges::greater_equal()) == mask.end());
    must(quorvah::readCpuList(quorvah::cpuListText(mask)) == mask);
}

constexpr std::array kDecoders = {readPartitions, readSmbios,     readNetlink, readIds,     readUdev,
                                  readUtmp,       readZone,       readCpus,    readProcNet, readDeviceTexts,
                                  readAta,        readSuperblock, readMasks};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    kDecoders[static_cast<unsigned char>(data[0] - '2') % kDecoders.size()](
        {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
