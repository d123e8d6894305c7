// What TypeScript accepts and refuses: the records have the types of the catalogue. An error that is expected but does not come is one.
import { Library, ZavError, codes, type Hardware, type records } from 'zav';

export async function inventory(library: Library, dynamic: string): Promise<void> {
  const hardware = await library.hardware(['Processor', 'SoftwarePackages'], { timeout: 5000, signal: AbortSignal.timeout(1) });
  const processor: records.Processor = hardware.groups.Processor[0]!;
  const speed: number | null = processor.CurrentClockSpeed;
  const flags: string[] | null = processor.Flags;
  const installed: Date | null = hardware.groups.SoftwarePackages[0]!.InstallDate;
  const state: 'complete' | string = hardware.status.Processor.state;
  const all: Hardware = await library.hardware();
  const some = await library.hardware([dynamic, 5]);
  const software = await library.software(['<Signature/>'], { settings: [['Secrets', 'allow', '/root']] });
  const version: string | undefined = software.results[0]?.variables['version'];
  console.log(speed, flags, installed, state, all.groups.Lpar, some.groups.Storage?.[0], version);

  // @ts-expect-error: it may be null
  const name: string = processor.Name;
  // @ts-expect-error: there is no such field
  console.log(processor.Sped, name);
  // @ts-expect-error: the group was not asked for
  console.log(hardware.groups.Memory);
  // @ts-expect-error: not a list
  await library.hardware('Memory');
  // @ts-expect-error: a signature is no number
  await library.software(3);

  try {
    await library.hardware(['Memory']);
  } catch (error) {
    if (error instanceof ZavError && error.code === codes.HW_SCANNER) console.log(error.reasons[0]);
  }
}
