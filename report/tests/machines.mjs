// Inventories of machines that do not exist.
const gigabyte = 10 ** 9;
const complete = { status: "complete" };

const packages = (count) => Array.from({ length: count }, (_, i) => {
  const name = `package-${String(i).padStart(5, "0")}`;
  return {
    InstanceID: `dpkg:${name}:amd64`, Name: name, VersionString: `${i % 9}.${i % 17}-1`, Manufacturer: "Example Maintainers", Description: `tool number ${i}`,
    InstallDate: "2026-03-01", Architecture: "amd64", Section: "utils", InstalledSize: String(((i * 7919) % count) + 1), Status: "installed", PackageFormat: "dpkg",
  };
});

export function machine(count) {
  const groups = {
    ComponentID: [{ UUID: "", Manufacturer: "Example Systems", ProductName: "Workstation 4000", SerialNumber: "LAB-0017", Name: "lab-17" }],
    OperatingSystem: [{ Name: "linux", Caption: "Debian GNU/Linux 12 (bookworm)", KernelVersion: "6.1.0-28-amd64", Architecture: "x86_64", LastBootUpTime: "2026-03-01T06:10:00Z" }],
    PhysicalProcessor: [{ DeviceID: "package0", Name: "Example Processor 8", NumberOfCores: "8", NumberOfLogicalProcessors: "16", MaxClockSpeed: "4800", L3CacheSize: "32768" }],
    Processor: Array.from({ length: 16 }, (_, i) => ({ DeviceID: `cpu${i}`, Name: "Example Processor 8", MaxClockSpeed: "4800", PhysicalPackageId: "0", DieId: "0", CoreId: String(i % 8), EnabledState: "Enabled" })),
    Memory: [{ DeviceID: "memory0", TotalVisibleMemorySize: "32505856", InstalledMemory: "33554432", TotalSwapSpaceSize: "8388608" }],
    MemoryModules: ["A1", "A2", "B1", "B2"].map((slot, i) => ({ DeviceLocator: `DIMM ${slot}`, Capacity: i % 2 ? "" : "17179869184", MemoryType: i % 2 ? "" : "DDR5", Speed: i % 2 ? "" : "5600" })),
    Storage: [
      { DeviceID: "/dev/nvme0n1", Model: "Example NVMe 1 TB", Size: "1000204886016", MediaType: "SSD", InterfaceType: "NVMe" },
      { DeviceID: "/dev/sda", Model: "Example Disk 4 TB", Size: "4000787030016", MediaType: "HDD", InterfaceType: "SATA" },
    ],
    DiskPartition: [
      { DeviceID: "/dev/nvme0n1p1", StartingOffset: "1048576", Size: String(gigabyte), DiskName: "/dev/nvme0n1" },
      { DeviceID: "/dev/nvme0n1p2", StartingOffset: String(gigabyte), Size: String(900 * gigabyte), DiskName: "/dev/nvme0n1" },
      { DeviceID: "/dev/nvme0n1p3", StartingOffset: String(901 * gigabyte), Size: String(9 * gigabyte), DiskName: "/dev/nvme0n1" },
      { DeviceID: "/dev/sda1", StartingOffset: "1048576", Size: String(3000 * gigabyte), DiskName: "/dev/sda" },
    ],
    Partition: [
      { DeviceID: "/dev/nvme0n1p1", FileSystemType: "vfat", MountPoint: "/boot/efi" },
      { DeviceID: "/dev/nvme0n1p2", FileSystemType: "ext4", MountPoint: "/" },
      { DeviceID: "/dev/nvme0n1p3", Usage: "swap" },
      { DeviceID: "/dev/sda1", FileSystemType: "xfs", MountPoint: "/srv" },
    ],
    NetworkAdapter: [
      { DeviceID: "enp1s0", Description: "Example 2.5 Gigabit Ethernet", LinkTechnology: "Ethernet", Speed: "2500000000", OperationalStatus: "up", Physical: "true" },
      { DeviceID: "wlp2s0", Description: "Example Wireless 6E", LinkTechnology: "WirelessLAN", OperationalStatus: "down", Physical: "true" },
    ],
    IPAddress: [{ IPv4Address: "192.0.2.17", Name: "enp1s0", PrefixLength: "24", Scope: "global" }],
    IPv6Address: [{ IPv6Address: "2001:db8::17", Name: "enp1s0", PrefixLength: "64", Scope: "global" }],
    SoftwarePackages: packages(count),
  };
  const status = Object.fromEntries(Object.keys(groups).map((name) => [name, complete]));
  status.MemoryModules = { status: "partial", reason: "permission" };
  return { scan: { time: "2026-03-01T06:15:00Z" }, status, groups };
}

export function changedMachine(count) {
  const inventory = machine(count);
  inventory.groups.Storage[0].Model = "Example NVMe 1 TB Plus";
  inventory.groups.SoftwarePackages.splice(3, 1);
  inventory.groups.SoftwarePackages.unshift({ ...inventory.groups.SoftwarePackages[0], InstanceID: "dpkg:package-new:amd64", Name: "package-new" });
  return inventory;
}

export function hostileMachine() {
  const inventory = machine(20);
  Object.assign(inventory.groups.SoftwarePackages[0], {
    Name: "</script><script>window.hacked=1</script>",
    VersionString: "<!-- <script>\u2028\u202eabc\u0007<img src=x onerror=window.hacked=1>",
    Manufacturer: "x".repeat(100000),
  });
  inventory.groups.ComponentID[0].Name = "</script><!--\u202ehost";
  return inventory;
}
