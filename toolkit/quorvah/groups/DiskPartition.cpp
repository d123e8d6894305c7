#include <unistd.h>

#include <algorithm>
#include <string>

#include "schema/groups/DiskPartition.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BlockDevices.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KeyValueText.h"
#include "toolkit/quorvah/sources/PartitionTable.h"
#include "toolkit/quorvah/sources/UdevData.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kSector = 512;

// udev writes the code 83 as "0x83".
std::string typeOf(std::string_view udev) {
    std::string type(udevProperty(udev, "ID_PART_ENTRY_TYPE"));
    if (!type.starts_with("0x")) return type;
    type.erase(0, 2);
    return type.size() == 1 ? "0" + type : type;
}

// Whether the partition is bootable. In an MBR the flags are "0x80" then. In a GPT it is bit 2, "legacy BIOS
// bootable".
bool bootableBy(std::string_view flags, bool gpt) {
    if (!gpt) return flags == "0x80";
    constexpr std::string_view kDigits = "0123456789abcdef";
    const std::size_t last = flags.empty() ? 0 : kDigits.find(flags.back());
    return last != std::string_view::npos && (last & 4U) != 0;
}

void setFromUdev(std::string_view udev, Instance& partition, Count& size) {
    const std::string_view scheme = udevProperty(udev, "ID_PART_ENTRY_SCHEME");
    if (scheme.empty()) return;
    const bool gpt = scheme == "gpt";
    const Count number = readCount(udevProperty(udev, "ID_PART_ENTRY_NUMBER"));
    partition.set("Name", withoutHexEscapes(udevProperty(udev, "ID_PART_ENTRY_NAME")));
    partition.set("PartitionType", typeOf(udev));
    if (number) partition.set("PrimaryPartition", gpt || *number <= 4);
    partition.set("Bootable", bootableBy(udevProperty(udev, "ID_PART_ENTRY_FLAGS"), gpt));
    partition.set("PartitionUuid", udevProperty(udev, "ID_PART_ENTRY_UUID"));
    partition.set("TableType", scheme);
    if (!gpt && isExtendedPartition(typeOf(udev)))
        size = product(readCount(udevProperty(udev, "ID_PART_ENTRY_SIZE")), kSector);
}

// Whether this is the kernel's size of an extended partition, which keeps its blocks from being used: two blocks of 512
// bytes, or one of the disk.
bool isStub(Count size, const BlockDevice& disk) {
    return size && *size == std::max(2 * kSector, disk.blockSize().value_or(kSector));
}

// The partition table on the disk. It is read only if a partition needs it, because that requires root and may wake
// up an idle disk.
class TableOnDisk {
  public:
    TableOnDisk(const Root& root, const BlockDevice& disk) : root_(root), disk_(disk) {}

    // Sets `size` to that of an extended partition, for which the kernel has a stub of two blocks.
    void fill(std::uint64_t number, Instance& partition, Count& size) {
        read();
        if (!table_ || table_->type.empty()) return;
        partition.set("TableType", table_->type);
        for (const PartitionEntry& entry : table_->entries) {
            if (static_cast<std::uint64_t>(entry.number) != number) continue;
            partition.set("Name", entry.name);
            partition.set("PartitionType", entry.type);
            partition.set("PrimaryPartition", entry.primary);
            partition.set("Bootable", entry.bootable);
            partition.set("PartitionUuid", entry.uuid);
            if (isExtendedPartition(entry.type))
                size = product(entry.blocks, disk_.blockSize().value_or(512));
        }
    }

  private:
    void read() {
        if (table_ || !root_.live()) return;
        table_.emplace();
        const kest::Descriptor file = root_.open(disk_.path());
        if (!file.isOpen()) return;
        const std::uint64_t blockSize = disk_.blockSize().value_or(512);
        table_ = readPartitionTable(
            [&file](std::uint64_t offset, std::size_t size) {
                std::string bytes(size, '\0');
                const ssize_t count = ::pread(file.number(), bytes.data(), size, static_cast<off_t>(offset));
                bytes.resize(static_cast<std::size_t>(std::max(count, ssize_t{0})));
                return bytes;
            },
            blockSize);
    }

    const Root& root_;
    const BlockDevice& disk_;
    std::optional<PartitionTable> table_;
};

// The value of a line "KEY=value" in the uevent file of a device.
std::string ueventValue(const BlockDevice& device, std::string_view key) {
    const std::string uevent = device.content("uevent").value_or("");
    std::string_view rest = uevent;
    for (std::string_view line; nextLine(rest, line);) {
        if (takeField(line, '=') == key) return std::string(line);
    }
    return {};
}

// The kernel keeps 7 bits of each character of a name: "\u00FC" becomes "|". Where the table can be read, it has the name.
void setFromUevent(const BlockDevice& device, Instance& partition) {
    if (partition.get("Name").empty() && !device.root().live())
        partition.set("Name", ueventValue(device, "PARTNAME"));
    if (partition.get("PartitionUuid").empty())
        partition.set("PartitionUuid", ueventValue(device, "PARTUUID"));
}

constexpr const char* kSources[] = {"/sys/block", "/sys/class/block"};

void gather(GatheringContext& context, GroupData& data) {
    for (const BlockDevice& disk : blockDevices(context.root())) {
        TableOnDisk table(context.root(), disk);
        for (const BlockDevice& device : partitionsOf(context.root(), disk)) {
            Instance& partition = data.add(device.path());
            const Count number = device.number("partition");
            partition.set("StartingOffset", device.bytes("start"));
            partition.set("BlockSize", disk.blockSize());
            partition.set("DiskName", disk.path());
            partition.set("PartitionNumber", number);
            Count size = device.bytes("size");
            const bool stub = isStub(size, disk);
            setFromUdev(device.udevData(), partition, size);
            if (partition.get("TableType").empty() && number) table.fill(*number, partition, size);
            // Without a table it is unknown whether a partition of this size is an extended one.
            if (!stub || !partition.get("TableType").empty()) partition.set("Size", size);
            setFromUevent(device, partition);
        }
    }
}

}  // namespace

constexpr Group kDiskPartition{.displayName = "Disk Partition",
                               .xmlName = "DiskPartition",
                               .fields = schema::kDiskPartition.fields,
                               .gather = gather,
                               .sources = kSources};

}  // namespace toolkit::quorvah
