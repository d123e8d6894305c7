#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(Storage, ListsPhysicalDrivesOnly) {
    EXPECT_EQ(keysOf(gatheredTree(kStorage, "x86-server")),
              (std::vector<std::string>{"/dev/nvme0n1", "/dev/sda", "/dev/sdb", "/dev/sdc", "/dev/sr0"}));
}

TEST(Storage, ReportsASataDisk) {
    expectInstance(kStorage, "x86-server", "/dev/sda",
                   {{"DeviceID", "/dev/sda"},
                    {"Name", "sda"},
                    {"Model", "ST4000NM0035-1V4"},
                    {"SerialNumber", "ZC1ABCDE"},
                    {"FirmwareRevision", "TN03"},
                    {"Size", "4000787030016"},
                    {"BlockSize", "512"},
                    {"NumberOfBlocks", "7814037168"},
                    {"MediaType", "HDD"},
                    {"InterfaceType", "SATA"},
                    {"PhysicalBlockSize", "4096"},
                    {"WorldWideName", "5000c500a1b2c3d4"},
                    {"Removable", "false"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "0:0:0:0"},
                    {"Multipath", "false"}});
}

TEST(Storage, ReportsOnePathToASasDisk) {
    expectInstance(kStorage, "x86-server", "/dev/sdb",
                   {{"DeviceID", "/dev/sdb"},
                    {"Name", "sdb"},
                    {"Manufacturer", "TOSHIBA"},
                    {"Model", "PX05SMB120"},
                    {"SerialNumber", "58S0A00AT1EE"},
                    {"FirmwareRevision", "AS05"},
                    {"Size", "1200243695616"},
                    {"BlockSize", "4096"},
                    {"NumberOfBlocks", "293028246"},
                    {"MediaType", "SSD"},
                    {"InterfaceType", "SAS"},
                    {"PhysicalBlockSize", "4096"},
                    {"WorldWideName", "58ce38ee20aabbcc"},
                    {"Removable", "false"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "1:0:0:0"},
                    {"Multipath", "true"}});
}

TEST(Storage, ReportsAnNvmeDisk) {
    expectInstance(kStorage, "x86-server", "/dev/nvme0n1",
                   {{"DeviceID", "/dev/nvme0n1"},
                    {"Name", "nvme0n1"},
                    {"Model", "SAMSUNG MZQLB960HAJR-00007"},
                    {"SerialNumber", "S437NX0M900001"},
                    {"FirmwareRevision", "EDA5502Q"},
                    {"Size", "960197124096"},
                    {"BlockSize", "512"},
                    {"NumberOfBlocks", "1875385008"},
                    {"MediaType", "SSD"},
                    {"InterfaceType", "NVMe"},
                    {"PhysicalBlockSize", "512"},
                    {"WorldWideName", "36344730526000420025384100000001"},
                    {"Removable", "false"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "0000:5e:00.0"},
                    {"Multipath", "false"}});
}

TEST(Storage, DoesNotBelieveAUsbDriveThatItRotates) {
    expectInstance(kStorage, "x86-server", "/dev/sdc",
                   {{"DeviceID", "/dev/sdc"},
                    {"Name", "sdc"},
                    {"Manufacturer", "SanDisk"},
                    {"Model", "Ultra"},
                    {"SerialNumber", "4C530001230806112345"},
                    {"FirmwareRevision", "1.00"},
                    {"Size", "30943995904"},
                    {"BlockSize", "512"},
                    {"NumberOfBlocks", "60437492"},
                    {"InterfaceType", "USB"},
                    {"PhysicalBlockSize", "512"},
                    {"Removable", "true"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "6:0:0:0"},
                    {"Multipath", "false"}});
}

TEST(Storage, ReportsAnOpticalDrive) {
    const GroupData data = gatheredTree(kStorage, "x86-server");
    const Instance& drive = instanceOf(data, "/dev/sr0");
    EXPECT_EQ(drive.get("MediaType"), "Optical");
    EXPECT_EQ(drive.get("Model"), "DVD-ROM DU90N");
    EXPECT_EQ(drive.get("InterfaceType"), "SATA");
    EXPECT_EQ(drive.get("BlockSize"), "2048");
}

TEST(Storage, ReportsAMemoryCardWithoutItsBootArea) {
    expectOnly(kStorage, "arm64-board",
               {{"DeviceID", "/dev/mmcblk0"},
                {"Name", "mmcblk0"},
                {"Manufacturer", "SanDisk"},
                {"Model", "SD32G"},
                {"SerialNumber", "12ab34cd"},
                {"Size", "31914983424"},
                {"BlockSize", "512"},
                {"NumberOfBlocks", "62333952"},
                {"MediaType", "Flash"},
                {"InterfaceType", "MMC"},
                {"PhysicalBlockSize", "512"},
                {"Removable", "false"},
                {"ReadOnly", "false"},
                {"Multipath", "false"}});
}

TEST(Storage, ReportsNoMediumOrMakerOfAVirtualDisk) {
    expectOnly(kStorage, "kvm-guest",
               {{"DeviceID", "/dev/vda"},
                {"Name", "vda"},
                {"SerialNumber", "6d3e8a5243ab4d83"},
                {"Size", "21474836480"},
                {"BlockSize", "512"},
                {"NumberOfBlocks", "41943040"},
                {"InterfaceType", "virtio"},
                {"PhysicalBlockSize", "512"},
                {"Removable", "false"},
                {"ReadOnly", "true"},
                {"BusAddress", "0000:00:04.0"},
                {"Multipath", "false"}});
}

// A tree with one disk in the given place below /sys/devices.
class DiskTree {
  public:
    DiskTree(std::string name, const std::string& place) : name_(std::move(name)) {
        folder_ = "sys/devices/" + place + "/block/" + name_ + "/";
        tree_.write(folder_ + "dev", "8:0\n");
        tree_.link("sys/block/" + name_, "../devices/" + place + "/block/" + name_);
        tree_.link(folder_ + "device", "../../../" + place.substr(place.rfind('/') + 1));
        device_ = "sys/devices/" + place + "/";
    }

    DiskTree& disk(const std::string& file, const std::string& text) {
        tree_.write(folder_ + file, text);
        return *this;
    }
    DiskTree& device(const std::string& file, const std::string& text) {
        tree_.write(device_ + file, text);
        return *this;
    }
    DiskTree& file(const std::string& name, const std::string& text) {
        tree_.write(name, text);
        return *this;
    }
    DiskTree& udev(const std::string& text) { return file("run/udev/data/b8:0", text); }

    std::string value(const char* field) const {
        return instanceOf(gatheredBelow(kStorage, tree_.path()), "/dev/" + name_).get(field);
    }

  private:
    zavtest::ScratchDir tree_;
    std::string name_;
    std::string folder_;
    std::string device_;
};

const std::string kSataPlace = "pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0";

// The page 89h with the identity of a disk, whose texts have the two characters of each word swapped.
std::string identityPage(const std::string& model, const std::string& serial, const std::string& firmware,
                         char rotation, char sata) {
    std::string identity(512, '\0');
    const auto put = [&identity](std::size_t word, std::size_t size, std::string text) {
        text.resize(size, ' ');
        for (std::size_t i = 0; i < size; i += 2) {
            identity[2 * word + i] = text[i + 1];
            identity[2 * word + i + 1] = text[i];
        }
    };
    put(10, 20, serial);
    put(23, 8, firmware);
    put(27, 40, model);
    identity[2 * 76] = sata;
    identity[2 * 217] = rotation;
    std::string page = std::string("\0\x89\x02\x38", 4) + std::string(56, '\0');
    return page + identity;
}

TEST(AtaDisk, TellsItsWholeModelAndFirmwareInItsIdentity) {
    DiskTree tree("sda", kSataPlace);
    tree.device("vendor", "ATA     \n").device("model", "Samsung SSD 860 \n").device("rev", "4B6Q\n");
    EXPECT_EQ(tree.value("Model"), "Samsung SSD 860");
    EXPECT_EQ(tree.value("SerialNumber"), "");
    tree.device("vpd_pg89", identityPage("Samsung SSD 860 EVO 500GB", "S3Z2NB0K", "RVT04B6Q", 1, 2));
    EXPECT_EQ(tree.value("Model"), "Samsung SSD 860 EVO 500GB");
    EXPECT_EQ(tree.value("FirmwareRevision"), "RVT04B6Q");
    EXPECT_EQ(tree.value("SerialNumber"), "S3Z2NB0K");
    EXPECT_EQ(tree.value("InterfaceType"), "SATA");
    EXPECT_EQ(tree.value("MediaType"), "SSD");
}

TEST(AtaDisk, IsDescribedInFullByUdev) {
    DiskTree tree("sda", kSataPlace);
    tree.device("vendor", "ATA\n").device("model", "ST4000NM0035-1V4\n").device("rev", "N03\n");
    tree.udev(
        "E:ID_ATA=1\nE:ID_MODEL=ST4000NM0035-1V4107\nE:ID_MODEL_ENC=ST4000NM0035-1V4107\\x20\\x20\\x20\n"
        "E:ID_REVISION=TN03\nE:ID_ATA_ROTATION_RATE_RPM=7200\n");
    EXPECT_EQ(tree.value("Model"), "ST4000NM0035-1V4107");
    EXPECT_EQ(tree.value("FirmwareRevision"), "TN03");
    EXPECT_EQ(tree.value("MediaType"), "HDD");
    tree.udev("E:ID_MODEL_ENC=Another\\x20disk\n");
    EXPECT_EQ(tree.value("Model"), "ST4000NM0035-1V4");
}

TEST(AtaDisk, TellsItsModelAndSerialNumberInItsName) {
    DiskTree tree("sda", kSataPlace);
    tree.device("vendor", "ATA\n").device("model", "QEMU HARDDISK\n");
    tree.device("wwid", "t10.ATA     QEMU HARDDISK                           QM00001             \n");
    EXPECT_EQ(tree.value("Model"), "QEMU HARDDISK");
    EXPECT_EQ(tree.value("SerialNumber"), "QM00001");
}

TEST(InterfaceType, IsPataOnAnIdeControllerUnlessTheDiskIsSata) {
    const std::string place = "pci0000:00/0000:00:01.1/ata1/host0/target0:0:0/0:0:0:0";
    DiskTree tree("sda", place);
    tree.device("vendor", "ATA\n").disk("queue/rotational", "1\n");
    tree.file("sys/devices/pci0000:00/0000:00:01.1/class", "0x010180\n");
    EXPECT_EQ(tree.value("InterfaceType"), "PATA");
    EXPECT_EQ(tree.value("MediaType"), "");
    tree.file("sys/class/ata_link/link1/sata_spd", "3.0 Gbps\n");
    EXPECT_EQ(tree.value("InterfaceType"), "SATA");
    EXPECT_EQ(tree.value("MediaType"), "HDD");
}

TEST(InterfaceType, OfASataDiskOnASasControllerIsSata) {
    DiskTree tree("sda", "pci0000:00/0000:00:02.0/host1/port-1:0/end_device-1:0/target1:0:0/1:0:0:0");
    tree.device("vendor", "SEAGATE\n");
    EXPECT_EQ(tree.value("InterfaceType"), "SAS");
    tree.device("vendor", "ATA\n");
    EXPECT_EQ(tree.value("InterfaceType"), "SATA");
}

TEST(MediaType, IsKnownOnlyIfTheDiskTells) {
    DiskTree tree("sda", "pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/host6/target6:0:0/6:0:0:0");
    tree.disk("queue/rotational", "1\n").disk("removable", "0\n");
    EXPECT_EQ(tree.value("MediaType"), "");
    tree.device("vpd_pgb1", std::string("\0\xb1\0\x3c\x15\x18", 6));
    EXPECT_EQ(tree.value("MediaType"), "HDD");
    tree.device("vpd_pgb1", std::string("\0\xb1\0\x3c\0\x01", 6));
    EXPECT_EQ(tree.value("MediaType"), "SSD");
    DiskTree scsi("sda", "pci0000:00/0000:00:05.0/host2/target2:0:0/2:0:0:0");
    scsi.disk("queue/rotational", "1\n");
    EXPECT_EQ(scsi.value("MediaType"), "");
    DiskTree guest("sda", "pci0000:00/0000:00:07.0/virtio3/host0/target0:0:2/0:0:2:3");
    guest.disk("queue/rotational", "1\n");
    EXPECT_EQ(guest.value("MediaType"), "");
    guest.device("vpd_pgb1", std::string("\0\xb1\0\x3c\0\x01", 6));
    EXPECT_EQ(guest.value("MediaType"), "SSD");
    DiskTree sata("sda", kSataPlace);
    sata.disk("queue/rotational", "1\n");
    EXPECT_EQ(sata.value("MediaType"), "HDD");
    sata.device("vpd_pgb1", std::string("\0\xb1\0\x3c\0\0", 6));
    EXPECT_EQ(sata.value("MediaType"), "");
}

TEST(MediaType, IsUnknownOfADiskThatStandsForAnother) {
    DiskTree xen("xvda", "vbd-51712");
    xen.disk("queue/rotational", "0\n");
    EXPECT_EQ(xen.value("MediaType"), "");
    DiskTree mainframe("dasda", "css0/0.0.0100/0.0.0200");
    mainframe.disk("queue/rotational", "0\n");
    EXPECT_EQ(mainframe.value("MediaType"), "");
    DiskTree sas("sda", "pci0000:00/0000:00:02.0/host1/port-1:0/end_device-1:0/target1:0:0/1:0:0:0");
    sas.disk("queue/rotational", "1\n").device("vendor", "VMware  \n");
    EXPECT_EQ(sas.value("MediaType"), "");
    DiskTree sata("sda", kSataPlace);
    sata.disk("queue/rotational", "1\n").device("vendor", "ATA     \n").device("model", "QEMU HARDDISK   \n");
    EXPECT_EQ(sata.value("MediaType"), "");
    sata.device("vpd_pgb1", std::string("\0\xb1\0\x3c\0\x01", 6));
    EXPECT_EQ(sata.value("MediaType"), "SSD");
}

TEST(MemoryCard, TellsItsMakerByANumber) {
    DiskTree chip("mmcblk0", "platform/soc/fe340000.mmc/mmc_host/mmc0/mmc0:0001");
    chip.device("type", "MMC\n").device("manfid", "0x000045\n").device("name", "DG4032\n");
    EXPECT_EQ(chip.value("Manufacturer"), "SanDisk");
    EXPECT_EQ(chip.value("Model"), "DG4032");
    chip.device("type", "SD\n");
    EXPECT_EQ(chip.value("Manufacturer"), "");
    chip.device("manfid", "0x00001b\n");
    EXPECT_EQ(chip.value("Manufacturer"), "Samsung");
    chip.device("manfid", "0x0003001b\n");
    EXPECT_EQ(chip.value("Manufacturer"), "");
}

TEST(UsbDisk, HasTheSerialNumberOfItsDevice) {
    const std::string place = "pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/host6/target6:0:0/6:0:0:0";
    DiskTree tree("sda", place);
    tree.udev("E:ID_BUS=usb\nE:ID_SERIAL_SHORT=AB_12\n");
    EXPECT_EQ(tree.value("SerialNumber"), "AB_12");
    tree.file("sys/devices/pci0000:00/0000:00:14.0/usb1/1-3/serial",
              "AB\xc3\xa4"
              "12\n");
    EXPECT_EQ(tree.value("SerialNumber"),
              "AB\xc3\xa4"
              "12");
}

TEST(OpticalDrive, HasNoSizeWithoutADisc) {
    DiskTree tree("sr0", kSataPlace);
    tree.device("rev", "A1C1\n").disk("size", "2097151\n").disk("removable", "1\n");
    EXPECT_EQ(tree.value("Size") + tree.value("NumberOfBlocks"), "");
    tree.disk("size", "1325056\n");
    EXPECT_EQ(tree.value("Size"), "678428672");
    tree.udev("E:ID_CDROM=1\nE:ID_REVISION=A1C1B2\n");
    EXPECT_EQ(tree.value("Size"), "");
    EXPECT_EQ(tree.value("FirmwareRevision"), "A1C1B2");
    tree.udev("E:ID_CDROM=1\nE:ID_CDROM_MEDIA=1\n");
    EXPECT_EQ(tree.value("Size"), "678428672");
}

TEST(CardReader, HasNoSizeWithoutACard) {
    DiskTree tree("sda", "pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/host6/target6:0:0/6:0:0:0");
    tree.disk("size", "0\n").disk("removable", "1\n");
    EXPECT_EQ(tree.value("Size"), "");
}

TEST(Storage, OmitsImpossibleSizes) {
    expectInstance(kStorage, "contradictory", "/dev/sdb",
                   {{"DeviceID", "/dev/sdb"}, {"Name", "sdb"}, {"Multipath", "false"}});
    expectInstance(kStorage, "contradictory", "/dev/sda",
                   {{"DeviceID", "/dev/sda"}, {"Name", "sda"}, {"Multipath", "false"}});
}

// Whether a block device is not a drive.
bool isMadeUp(const std::string& name) {
    const char* const prefixes[] = {"loop", "ram", "zram", "dm-", "md", "nbd", "fd"};
    return std::ranges::any_of(prefixes, [&name](const char* prefix) { return name.starts_with(prefix); });
}

void expectIdentityOfLsblk(const Instance& disk, std::map<std::string, std::string>& row) {
    // lsblk has the name of an ATA disk cut to 16 characters where udev has not asked the disk.
    EXPECT_TRUE(disk.get("Model").starts_with(row["MODEL"])) << joined(disk) << " " << row["MODEL"];
    EXPECT_TRUE(disk.get("FirmwareRevision").starts_with(row["REV"])) << joined(disk) << " " << row["REV"];
    expectKnown(disk, "SerialNumber", row["SERIAL"]);
    if (row["WWN"].starts_with("0x")) expectKnown(disk, "WorldWideName", row["WWN"].substr(2));
    const std::map<std::string, std::string> interfaces = {
        {"sata", "SATA"}, {"nvme", "NVMe"}, {"usb", "USB"}, {"sas", "SAS"}, {"iscsi", "iSCSI"}};
    const auto interface = interfaces.find(row["TRAN"]);
    if (interface != interfaces.end()) expectKnown(disk, "InterfaceType", interface->second);
    const std::string media = disk.get("MediaType");
    if (media == "HDD" || media == "SSD") {
        EXPECT_EQ(row["ROTA"], media == "HDD" ? "1" : "0") << joined(disk);
    }
}

TEST(StorageLive, MatchesLsblk) {
    const GroupData data = gatheredLive(kStorage);
    std::set<std::string> theirs;
    for (const std::string& line :
         linesOf("LC_ALL=C lsblk -b -d -P -o "
                 "NAME,SIZE,RO,RM,PHY-SEC,LOG-SEC,TYPE,MODEL,REV,SERIAL,WWN,TRAN,ROTA")) {
        std::map<std::string, std::string> row = pairsOf(line);
        if (isMadeUp(row["NAME"]) || (row["TYPE"] != "disk" && row["TYPE"] != "rom")) continue;
        const Instance& disk = instanceOf(data, "/dev/" + row["NAME"]);
        EXPECT_EQ(disk.get("Size"), row["SIZE"]);
        EXPECT_EQ(disk.get("BlockSize"), row["LOG-SEC"]);
        EXPECT_EQ(disk.get("PhysicalBlockSize"), row["PHY-SEC"]);
        EXPECT_EQ(disk.get("ReadOnly"), row["RO"] == "1" ? "true" : "false");
        EXPECT_EQ(disk.get("Removable"), row["RM"] == "1" ? "true" : "false");
        expectIdentityOfLsblk(disk, row);
        theirs.insert("/dev/" + row["NAME"]);
    }
    const Rows keys = keysOf(data);
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()), theirs);
}

TEST(Storage, ADiskOfAnNvmeSubsystemWithOneControllerIsAtItsAddress) {
    const zavtest::ScratchDir tree;
    const std::string subsystem = "sys/devices/virtual/nvme-subsystem/nvme-subsys0/";
    tree.write(subsystem + "nvme0n1/size", "2097152\n");
    tree.write(subsystem + "model", "Large\n");
    tree.link(subsystem + "nvme0n1/device", "../../nvme-subsys0");
    tree.link(subsystem + "nvme0", "../../../pci0000:00/0000:00:01.0/nvme/nvme0");
    tree.write("sys/devices/pci0000:00/0000:00:01.0/nvme/nvme0/nvme0c0n1/hidden", "1\n");
    tree.link("sys/block/nvme0n1", "../devices/virtual/nvme-subsystem/nvme-subsys0/nvme0n1");
    tree.link("sys/block/nvme0c0n1", "../devices/pci0000:00/0000:00:01.0/nvme/nvme0/nvme0c0n1");
    const GroupData one = gatheredBelow(kStorage, tree.path());
    ASSERT_EQ(std::vector<std::string>{"/dev/nvme0n1"}, keysOf(one));
    EXPECT_EQ("0000:00:01.0", one.instances().front().get("BusAddress"));
    EXPECT_EQ("false", one.instances().front().get("Multipath"));

    tree.link(subsystem + "nvme1", "../../../pci0000:00/0000:00:02.0/nvme/nvme1");
    const GroupData several = gatheredBelow(kStorage, tree.path());
    EXPECT_EQ("", several.instances().front().get("BusAddress"));
    EXPECT_EQ("true", several.instances().front().get("Multipath"));
}

TEST(Storage, AnNvmeDiskInANetworkIsADriveAndItsPathsAreNot) {
    const zavtest::ScratchDir tree;
    const std::string controller = "sys/devices/virtual/nvme-fabrics/ctl/nvme2/";
    tree.write(controller + "nvme2n1/size", "2097152\n");
    tree.write("sys/devices/pci0000:00/0000:00:01.0/nvme/nvme0/nvme0c0n1/size", "2097152\n");
    tree.write("sys/devices/virtual/block/zram0/size", "2097152\n");
    tree.link("sys/block/nvme2n1", "../devices/virtual/nvme-fabrics/ctl/nvme2/nvme2n1");
    tree.link("sys/block/nvme0c0n1", "../devices/pci0000:00/0000:00:01.0/nvme/nvme0/nvme0c0n1");
    tree.link("sys/block/zram0", "../devices/virtual/block/zram0");
    const GroupData data = gatheredBelow(kStorage, tree.path());
    ASSERT_EQ(std::vector<std::string>{"/dev/nvme2n1"}, keysOf(data));
    EXPECT_EQ("NVMe", data.instances().front().get("InterfaceType"));
}

TEST(Storage, ADiskOfAnOldKernelIsPlacedByItsDevice) {
    const zavtest::ScratchDir tree;
    const std::string place =
        "devices/pci0000:00/0000:00:1d.7/usb1/1-1/1-1.4/1-1.4:1.0/host6/target6:0:0/6:0:0:0";
    tree.write("sys/" + place + "/model", "Flash Disk\n");
    tree.write("sys/devices/pci0000:00/0000:00:1d.7/usb1/1-1/1-1.4/serial", "4C53\n");
    tree.write("sys/block/sdb/size", "2048\n");
    tree.link("sys/block/sdb/device", "../../" + place);
    const GroupData data = gatheredBelow(kStorage, tree.path());
    const Instance& disk = instanceOf(data, "/dev/sdb");
    EXPECT_EQ("USB", disk.get("InterfaceType"));
    EXPECT_EQ("6:0:0:0", disk.get("BusAddress"));
    EXPECT_EQ("4C53", disk.get("SerialNumber"));
}

TEST(Storage, IsFoundInTheClassOfBlockDevicesToo) {
    const zavtest::ScratchDir tree;
    const std::string disk = "sys/devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0/block/sda";
    tree.write(disk + "/size", "15628053168\n");
    tree.write(disk + "/queue/logical_block_size", "4096\n");
    tree.write(disk + "/sda1/partition", "1\n");
    tree.link("sys/class/block/sda", "../../../" + disk);
    tree.link("sys/class/block/sda1", "../../../" + disk + "/sda1");
    tree.write("sys/class/block/sdb1/size", "2048\n");
    const GroupData data = gatheredBelow(kStorage, tree.path());
    ASSERT_EQ(std::vector<std::string>{"/dev/sda"}, keysOf(data));
    EXPECT_EQ("8001563222016", data.instances().front().get("Size"));
    EXPECT_EQ("1953506646", data.instances().front().get("NumberOfBlocks"));
    EXPECT_EQ("SATA", data.instances().front().get("InterfaceType"));
    EXPECT_EQ(std::vector<std::string>{"/dev/sda1"}, keysOf(gatheredBelow(kPartition, tree.path())));
}

}  // namespace
}  // namespace toolkit::quorvah
