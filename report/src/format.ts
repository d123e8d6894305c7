// Values with units that people read. What a unit is comes from the catalogue.
import type { FieldInfo } from "./data";

const scaled = (value: number, base: number, units: string[]): string => {
  let step = 0;
  while (value >= base && step + 1 < units.length) { value /= base; ++step; }
  return `${value >= 100 || Number.isInteger(value) ? Math.round(value) : value.toFixed(1)} ${units[step]}`;
};

export function bytes(value: number): string { return scaled(value, 1000, ["B", "kB", "MB", "GB", "TB", "PB", "EB"]); }
export function binaryBytes(value: number): string { return scaled(value, 1024, ["B", "KiB", "MiB", "GiB", "TiB", "PiB"]); }

const decimal = /^\d{1,15}$/;

// The value for people, or undefined if it is best shown as it is.
export function readable(info: FieldInfo | undefined, value: string): string | undefined {
  if (!info || value === "") return undefined;
  if (info.type === "time" && value.length > 10) return value.replace("T", " ").replace("Z", " UTC");
  if (info.list || !decimal.test(value)) return undefined;
  const number = Number(value);
  switch (info.unit) {
    case "bytes": return bytes(number);
    case "KiB": return binaryBytes(number * 1024);
    case "MHz": return number >= 1000 ? `${(number / 1000).toFixed(1)} GHz` : `${number} MHz`;
    case "bit/s": return scaled(number, 1000, ["bit/s", "kbit/s", "Mbit/s", "Gbit/s", "Tbit/s"]);
    default: return info.unit ? `${value} ${info.unit}` : undefined;
  }
}

export const isNumber = (info: FieldInfo | undefined): boolean =>
  info !== undefined && !info.list && ["count", "integer", "decimal"].includes(info.type);

// Control, format and private characters: they are invisible or change how their neighbours look.
const hidden = /[\p{Cc}\p{Cf}\p{Co}\p{Cs}\p{Zl}\p{Zp}\uFFFD]/u;
export const hiddenRuns = /([\p{Cc}\p{Cf}\p{Co}\p{Cs}\p{Zl}\p{Zp}\uFFFD])/u;
export const hasHidden = (text: string): boolean => hidden.test(text);
export const escaped = (character: string): string =>
  `\\u{${character.codePointAt(0)!.toString(16).padStart(4, "0")}}`;

const collator = new Intl.Collator("en", { numeric: true });
export const compare = (a: string, b: string): number => collator.compare(a, b);
