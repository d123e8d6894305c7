import type * as records from './records.js';
import type { Codes, Groups } from './records.js';

export type { records };
export type { Groups } from './records.js';

/** A path: text, bytes, or a URL of a file. */
export type Path = string | Uint8Array | URL;

/** A value of a field; null if it is unknown. */
export type Value = string | number | boolean | Date | string[] | number[] | boolean[] | Date[] | null;

export interface Message {
  /** 0 for errors and notices that matter at every setting, 1 for notable events, 2 for the trace. */
  level: number;
  /** 1 for the library, 3 for hardware, 4 for software. */
  component: number;
  /** The function of the library that sends the message. */
  function: string;
  text: string;
}

export interface LibraryOptions {
  /** Directory of the scanners. Default: the one that /etc/zav/zav.ini names for the product. */
  toolkit?: Path;
  /** Default: the one that TEMP or TMP names, else /tmp. */
  tempDirectory?: Path;
  /** The shared library. Default: the one that the environment variable ZAV_LIBRARY names, else libzav.so.1. */
  library?: string | URL;
  /** Receives the messages. */
  log?: (message: Message) => void;
  /** The highest level of messages that are received. Default: 1. */
  logLevel?: 0 | 1 | 2;
  /** Milliseconds that a scan may take. Default: no limit. */
  timeout?: number;
}

export interface ScanOptions {
  /** Ends the scan. The promise is rejected with the reason of the signal. */
  signal?: AbortSignal;
  /** Milliseconds that the scan may take. The promise is rejected with a TimeoutError. */
  timeout?: number;
}

export interface SoftwareOptions extends ScanOptions {
  /** Preset variables: guid of the signature, name, value. */
  variables?: readonly (readonly [guid: string, name: string, value: string])[];
  /** Settings of the scanner: plug-in, attribute, value. */
  settings?: readonly (readonly [plugin: string, attribute: string, value: string])[];
}

/** How completely a group was read, and why it is not complete. */
export interface Status {
  state: 'complete' | 'partial' | 'unread' | 'not-applicable' | 'unsupported' | 'unknown';
  reason: string;
}

/** The hardware that a scan found. */
export class Hardware<Found = Groups> {
  private constructor();
  /** The instances of each scanned group. */
  readonly groups: Found;
  /** How completely each group was read. */
  readonly status: { readonly [Group in keyof Found]: Status };
  /** Whether every group that this machine can have was read completely. */
  readonly complete: boolean;
  /** The instances of a group whose name is not known before the program runs. */
  instances(group: string): Record<string, Value>[];
  /** The instances of a group with the values as the scanner wrote them. */
  texts(group: string): Record<string, string>[];
}

/** A signature that matched. */
export interface Result {
  guid: string;
  variables: Record<string, string>;
  /** XML text; empty if the signature has none. */
  metadata: string;
}

/** The signatures that matched in an evaluation. */
export class Software {
  private constructor();
  readonly results: Result[];
  /** What the scanner could not examine, each an XML text of one line. */
  readonly warnings: string[];
  /** The results with this identifier. */
  find(guid: string): Result[];
  /** One object for each result: its guid and its variables. */
  rows(): Record<string, string>[];
}

/** A call of the library failed. */
export class ZavError extends Error {
  private constructor();
  /** The return code. */
  readonly code: number;
  /** The sentence for it. */
  readonly text: string;
  /** What the library said about it, the causes first. */
  readonly reasons: readonly string[];
}

/** The return codes of the library, by name. */
export const codes: Codes;

/** The inventory library, opened for a product. Scans run in threads of their own and may overlap. */
export class Library {
  /** @param name the calling product's name */
  constructor(name: string, options?: LibraryOptions);
  /** Scans these groups. */
  hardware<Name extends keyof Groups>(groups: readonly Name[], options?: ScanOptions): Promise<Hardware<Pick<Groups, Name>>>;
  /** Scans these groups, named by numbers or by names that are not known before the program runs. */
  hardware(groups: readonly (string | number)[], options?: ScanOptions): Promise<Hardware<Partial<Groups>>>;
  /** Scans all groups. */
  hardware(groups?: undefined, options?: ScanOptions): Promise<Hardware>;
  /** Evaluates a signature, or several in one run of the scanner, given as XML texts. */
  software(signatures: string | Uint8Array | readonly (string | Uint8Array)[], options?: SoftwareOptions): Promise<Software>;
  /** Evaluates the signatures of a file. */
  softwareFile(file: Path, options?: SoftwareOptions): Promise<Software>;
  /** Ends the use of the library. Scans that run go on. */
  close(): void;
}
