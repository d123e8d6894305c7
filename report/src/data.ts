// The document that the command puts into the page.
export type Row = Record<string, string>;

export interface FieldInfo {
  name: string; type: string; unit?: string; list: boolean; key: boolean; privacy: string; access: string; meaning: string;
}
export interface GroupInfo { name: string; about: string; fields: FieldInfo[] }
export interface Status { status: string; reason?: string; text?: string }
export interface Change { key: Row; label: string; fields: Record<string, { old: string; new: string; needs?: string }>; needs?: string }
export interface Removed { key: Row; label: string; fields: Row; needs?: string }
export interface GroupChanges { added: Removed[]; removed: Removed[]; changed: Change[] }
export interface Match {
  guid: string; name?: string; cpe?: string; purl?: string; variables: Row; metadata?: Row; evidence?: Row[];
}
export interface Report {
  hardware: {
    scan: { time: string; ofTree: boolean; sanitized: boolean; privileged?: boolean };
    status: Record<string, Status>;
    groups: Record<string, Row[]>;
  } | null;
  software: {
    scan: { time: string; host?: string; root?: string }; complete: boolean; results: Match[];
    undecided: { guid: string; name?: string; because?: string[] }[]; warnings: Row[];
  } | null;
  catalogue: Record<string, GroupInfo>;
  changes: { old: { file: string; time?: string }; same: boolean; groups: Record<string, GroupChanges>; notes: string[] } | null;
}

export const report: Report = JSON.parse(document.getElementById("data")!.textContent!);
export const rows = (group: string): Row[] => report.hardware?.groups[group] ?? [];
export const first = (group: string): Row => rows(group)[0] ?? {};
export const fieldInfo = (group: string, field: string): FieldInfo | undefined =>
  report.catalogue[group]?.fields.find((info) => info.name === field);

export type Mark = { kind: "new" | "changed"; fields: Change["fields"] };

// The changes of a group by the keys of its instances. Several instances may have the same key, so the values must fit as well.
export function marksOf(group: string): (row: Row) => Mark | undefined {
  const changes = report.changes?.groups[group];
  if (!changes) return () => undefined;
  const names = Object.keys((changes.added[0] ?? changes.changed[0])?.key ?? {});
  const keyOf = (row: Row) => JSON.stringify(names.map((name) => row[name] ?? ""));
  const marks = new Map<string, { mark: Mark; values: [string, string][] }[]>();
  const add = (key: Row, mark: Mark, values: [string, string][]) =>
    marks.set(keyOf(key), [...(marks.get(keyOf(key)) ?? []), { mark, values }]);
  for (const { key, fields } of changes.added) add(key, { kind: "new", fields: {} }, Object.entries(fields));
  for (const { key, fields } of changes.changed)
    add(key, { kind: "changed", fields }, Object.entries(fields).map(([name, value]) => [name, value.new]));
  return (row) => marks.get(keyOf(row))?.find(({ values }) => values.every(([name, value]) => (row[name] ?? "") === (value ?? "")))?.mark;
}
