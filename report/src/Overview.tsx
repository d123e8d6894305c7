// The machine at a glance.
import type { ComponentChildren } from "preact";
import { first, report, rows, type Row } from "./data";
import { binaryBytes, bytes, compare } from "./format";
import { Value } from "./Groups";
import { Text } from "./Text";

const Card = ({ title, wide, children }: { title: string; wide?: boolean; children: ComponentChildren }) => <div class={wide ? "card wide" : "card"}><h3>{title}</h3>{children}</div>;

function groupBy(list: Row[], keyOf: (row: Row) => string): [string, Row[]][] {
  const map = new Map<string, Row[]>();
  for (const row of list) map.set(keyOf(row), [...(map.get(keyOf(row)) ?? []), row]);
  return [...map].sort(([a], [b]) => compare(a, b));
}

// Packages, in them cores, in them threads.
function Topology() {
  const packages = groupBy(rows("Processor"), (row) => row.PhysicalPackageId || "0");
  return (
    <div class="topology" role="img" aria-label={packages.map(([id, list]) =>
      `Package ${id}: ${groupBy(list, (row) => `${row.DieId}/${row.CoreId || row.DeviceID}`).length} cores, ${list.length} threads`).join("; ")}>
      {packages.map(([id, list]) => (
        <div class="package">
          <span class="muted">package {id}</span>
          <div class="cores">
            {groupBy(list, (row) => `${row.DieId}/${row.CoreId || row.DeviceID}`).map(([, threads]) => (
              <div class={`core ${threads[0].CoreType === "efficiency" ? "efficiency" : ""}`}>
                {threads.map((thread) => <i class={thread.EnabledState === "Disabled" ? "off" : ""} title={thread.DeviceID} />)}
              </div>
            ))}
          </div>
        </div>
      ))}
    </div>
  );
}

function Disks() {
  const partitions = rows("DiskPartition");
  const uses = new Map(rows("Partition").map((row) => [row.DeviceID, row]));
  return (
    <>
      {rows("Storage").filter((disk) => Number(disk.Size) > 0).map((disk) => {
        const size = Number(disk.Size);
        const own = partitions.filter((part) => part.DiskName === disk.DeviceID || (part.DiskName && `/dev/${part.DiskName}` === disk.DeviceID));
        const parts = own.length ? own : uses.has(disk.DeviceID) ? [{ ...uses.get(disk.DeviceID)!, Size: disk.Size }] : [];
        const label = (part: Row) => {
          const use = uses.get(part.DeviceID);
          return [part.DeviceID?.replace("/dev/", ""), use?.FileSystemType || use?.Usage, use?.MountPoint].filter(Boolean).join(" ");
        };
        return (
          <div class="disk">
            <div><b><Text value={disk.DeviceID} /></b> <Text value={disk.Model} /> <span class="muted">{bytes(size)} {disk.MediaType} {disk.InterfaceType}</span></div>
            <svg viewBox="0 0 1000 18" preserveAspectRatio="none" role="img"
                 aria-label={`${disk.DeviceID}: ${parts.map((part) => `${label(part)} ${bytes(Number(part.Size))}`).join(", ") || "no partitions"}`}>
              <rect class="free" width="1000" height="18" />
              {parts.map((part, i) => (
                <rect class={`part p${i % 4}`} x={(1000 * Number(part.StartingOffset || 0)) / size} width={Math.max(2, (1000 * Number(part.Size)) / size - 1)} height="18">
                  <title>{label(part)}</title>
                </rect>
              ))}
            </svg>
            <ul class="legend">{parts.map((part, i) => <li><i class={`p${i % 4}`} /><Text value={label(part)} /> <span class="muted">{bytes(Number(part.Size))}</span></li>)}</ul>
          </div>
        );
      })}
    </>
  );
}

function Network() {
  const addresses = [...rows("IPAddress").map((row) => [row.Name, row.IPv4Address, row.PrefixLength, row.Scope]),
                     ...rows("IPv6Address").map((row) => [row.Name, row.IPv6Address, row.PrefixLength, row.Scope])];
  const adapters = rows("NetworkAdapter").filter((row) => row.LinkTechnology !== "Loopback")
    .sort((a, b) => Number(b.Physical === "true") - Number(a.Physical === "true"));
  return (
    <ul class="plain">
      {adapters.slice(0, 8).map((adapter) => (
        <li>
          <b><Text value={adapter.DeviceID} /></b> <Text value={adapter.Description || adapter.LinkTechnology} />{" "}
          {adapter.Speed && <Value group="NetworkAdapter" field="Speed" value={adapter.Speed} />} <span class="muted">{adapter.OperationalStatus}</span>
          {addresses.filter(([name, , , scope]) => name === adapter.DeviceID && scope !== "link").map(([, address, length]) => <div class="address"><Text value={`${address}/${length}`} /></div>)}
        </li>
      ))}
      {adapters.length > 8 && <li class="muted">and {adapters.length - 8} more</li>}
    </ul>
  );
}

export function Overview() {
  const machine = first("ComponentID");
  const system = first("OperatingSystem");
  const memory = first("Memory");
  const processors = rows("PhysicalProcessor");
  const modules = rows("MemoryModules");
  const guest = first("VirtualMachineGuest");
  const partial = Object.values(report.hardware!.status).filter((status) => status.status === "partial" || status.status === "unread").length;
  const installed = Number(memory.InstalledMemory) || Number(memory.TotalVisibleMemorySize);
  return (
    <section id="overview" aria-labelledby="title-overview">
      <h2 id="title-overview" class="hidden">Overview</h2>
      <div class="cards">
        <Card title="Machine">
          <p class="big"><Text value={[machine.Manufacturer, machine.ProductName].filter(Boolean).join(" ") || "Unknown model"} /></p>
          <p><Text value={system.Caption || system.Name || ""} /> <span class="muted"><Text value={[system.KernelVersion, system.Architecture].filter(Boolean).join(", ")} /></span></p>
          {guest.VirtualSystemType && <p>Virtual machine: <Text value={guest.VirtualSystemType} /></p>}
          {machine.SerialNumber && <p class="muted">Serial number <Text value={machine.SerialNumber} /></p>}
          <p>{rows("SoftwarePackages").length.toLocaleString("en")} packages{report.software && `, ${report.software.results.length.toLocaleString("en")} recognised products`}</p>
          {partial > 0 && <p><a class="tag warn" href="#completeness">{partial === 1 ? "1 group" : `${partial} groups`} incomplete</a></p>}
        </Card>
        <Card title="Processor">
          {processors.map((one) => (
            <p><b><Text value={one.Name || first("Processor").Name || ""} /></b><br />
              <span class="muted">{one.NumberOfCores} cores, {one.NumberOfLogicalProcessors} threads{one.MaxClockSpeed && <>, <Value group="PhysicalProcessor" field="MaxClockSpeed" value={one.MaxClockSpeed} /></>}{one.L3CacheSize && <>, <Value group="PhysicalProcessor" field="L3CacheSize" value={one.L3CacheSize} /> L3</>}</span></p>
          ))}
          <Topology />
        </Card>
        <Card title="Memory">
          <p class="big">{installed ? binaryBytes(installed * 1024) : "unknown"}</p>
          <ul class="slots">
            {modules.map((one) => (
              <li class={Number(one.Capacity) > 0 ? "" : "empty"}>
                <b><Text value={one.DeviceLocator} /></b>{" "}
                {Number(one.Capacity) > 0 ? <>{binaryBytes(Number(one.Capacity))} <span class="muted"><Text value={one.MemoryType} />{one.Speed && ` ${one.Speed} MT/s`}</span></> : <span class="muted">empty</span>}
              </li>
            ))}
          </ul>
          {Number(memory.TotalSwapSpaceSize) > 0 && <p class="muted">Swap {binaryBytes(Number(memory.TotalSwapSpaceSize) * 1024)}</p>}
        </Card>
        <Card title="Disks" wide><Disks /></Card>
        <Card title="Network"><Network /></Card>
      </div>
    </section>
  );
}
