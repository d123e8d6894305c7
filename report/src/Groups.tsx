// A table for each group of the hardware, one for the software, and how they differ from before.
import { fieldInfo, marksOf, report, rows, type Row, type Match } from "./data";
import { isNumber, readable } from "./format";
import { Table, type Column } from "./Table";
import { Text } from "./Text";

const kColumns = 8;
// Where the order of the catalogue does not put first what people look for.
const kFirst: Record<string, string[]> = {
  SoftwarePackages: ["Name", "VersionString", "Architecture", "Status", "PackageFormat", "InstalledSize", "InstallDate", "Manufacturer"],
};

export const titleOf = (group: string) => report.catalogue[group]?.name ?? group;

export function Value({ group, field, value }: { group: string; field: string; value: string }) {
  const text = readable(fieldInfo(group, field), value);
  return text === undefined ? <Text value={value} /> : <span title={value}>{text}</span>;
}

function Details({ group, row, changes }: { group: string; row: Row; changes?: Record<string, { old: string; new: string }> }) {
  return (
    <dl class="fields">
      {Object.entries(row).filter(([name, value]) => value !== "" || changes?.[name]).map(([name, value]) => {
        const info = fieldInfo(group, name);
        return (
          <div>
            <dt>{name}</dt>
            <dd>
              <Text value={value} whole />{isNumber(info) && info?.unit ? ` ${info.unit}` : ""}
              {changes?.[name] && <span class="was"> was: <Text value={changes[name].old || "unknown"} /></span>}
              {info?.meaning && <span class="muted"> {info.meaning}</span>}
              {info && info.privacy !== "public" && <span class="tag">{info.privacy}</span>}
            </dd>
          </div>
        );
      })}
    </dl>
  );
}

function StatusText({ group }: { group: string }) {
  const status = report.hardware!.status[group];
  if (!status || status.status === "complete" || status.status === "unknown") return null;
  return <span class="tag warn">{status.status}{status.text ? `: ${status.text}` : ""}</span>;
}

export function GroupSection({ group, query }: { group: string; query: string }) {
  const all = rows(group);
  const names = new Set(all.flatMap((row) => Object.keys(row).filter((name) => row[name] !== "")));
  const order = [...(kFirst[group] ?? []), ...names].filter((name, i, list) => names.has(name) && list.indexOf(name) === i);
  const columns: Column<Row>[] = order.slice(0, kColumns).map((name) => {
    const info = fieldInfo(group, name);
    return {
      name, title: info?.meaning, numeric: isNumber(info), value: (row) => row[name] ?? "",
      show: (row) => <Value group={group} field={name} value={row[name] ?? ""} />,
    };
  });
  const mark = marksOf(group);
  const removed = report.changes?.groups[group]?.removed ?? [];
  return (
    <section id={`group-${group}`} aria-labelledby={`title-${group}`}>
      <h2 id={`title-${group}`}>{titleOf(group)} <span class="muted">{all.length}</span> <StatusText group={group} /></h2>
      {report.catalogue[group] && <p class="muted about">{report.catalogue[group].about.split("\n")[0]}</p>}
      {all.length === 1
        ? <Details group={group} row={all[0]} changes={mark(all[0])?.fields} />
        : <Table id={group} label={titleOf(group)} rows={all} columns={columns} query={query}
                 searchText={(row) => Object.values(row).join("\n")}
                 detail={(row) => <Details group={group} row={row} changes={mark(row)?.fields} />}
                 badge={(row) => { const kind = mark(row)?.kind; return kind && <span class={`tag ${kind}`}>{kind}</span>; }} />}
      {removed.length > 0 && <p><span class="tag gone">gone</span> {removed.map((one, i) => <>{i > 0 && ", "}<Text value={one.label} /></>)}</p>}
    </section>
  );
}

const variable = (match: Match, names: string[]) => names.map((name) => match.variables[name]).find(Boolean) ?? "";
const nameOf = (match: Match) => variable(match, ["name", "product"]) || match.name || match.guid;
const placeOf = (match: Match) => variable(match, ["path", "place", "location"]) || match.evidence?.[0]?.source || "";
const evidenceOf = (piece: Row) => [piece.kind, piece.name, piece.version, piece.source].filter(Boolean).join(" ");

export function SoftwareSection({ query }: { query: string }) {
  const software = report.software!;
  const columns: Column<Match>[] = [
    { name: "Name", value: nameOf },
    { name: "Version", value: (match) => variable(match, ["version"]) },
    { name: "Place", value: placeOf },
    { name: "Publisher", value: (match) => match.metadata?.Publisher ?? "" },
    { name: "Evidence", value: (match) => (match.evidence?.[0] ? evidenceOf(match.evidence[0]) : "") },
  ];
  return (
    <section id="software" aria-labelledby="title-software">
      <h2 id="title-software">Recognised software <span class="muted">{software.results.length}</span>
        {!software.complete && <span class="tag warn">incomplete</span>}</h2>
      <Table id="software" label="Recognised software" rows={software.results} columns={columns} query={query}
             searchText={(match) => [nameOf(match), match.guid, match.cpe, match.purl, ...Object.values(match.variables), ...Object.values(match.metadata ?? {})].join("\n")}
             detail={(match) => (
               <dl class="fields">
                 {[...Object.entries(match.variables), ...Object.entries(match.metadata ?? {}),
                   ["cpe", match.cpe ?? ""], ["purl", match.purl ?? ""], ["guid", match.guid]].filter(([, value]) => value)
                   .map(([name, value]) => <div><dt><Text value={name} /></dt><dd><Text value={value} whole /></dd></div>)}
                 {(match.evidence ?? []).map((piece) => <div><dt>evidence</dt><dd><Text value={evidenceOf(piece)} /></dd></div>)}
               </dl>
             )} />
    </section>
  );
}

export function ChangesSection() {
  const changes = report.changes!;
  return (
    <section id="changes" aria-labelledby="title-changes">
      <h2 id="title-changes">Changes <span class="muted">since <Text value={changes.old.time || changes.old.file} /></span></h2>
      {changes.same && <p>No differences.</p>}
      {changes.notes.map((note) => <p class="muted"><Text value={note} /></p>)}
      <ul class="changes">
        {Object.entries(changes.groups).map(([group, { added, removed, changed }]) => (
          <li>
            <a href={`#group-${group}`}>{titleOf(group)}</a>
            <ul>
              {added.slice(0, 30).map((one) => <li><span class="tag new">new</span> <Text value={one.label} /></li>)}
              {removed.slice(0, 30).map((one) => <li><span class="tag gone">gone</span> <Text value={one.label} /></li>)}
              {changed.slice(0, 30).map((one) => (
                <li><span class="tag changed">changed</span> <Text value={one.label} />: {Object.entries(one.fields).map(([name, value], i) => (
                  <>{i > 0 && "; "}{name} <del><Text value={value.old || "unknown"} /></del> <ins><Text value={value.new || "unknown"} /></ins></>
                ))}</li>
              ))}
              {Math.max(added.length, removed.length, changed.length) > 30 && <li class="muted">More of them are marked or listed in the group.</li>}
            </ul>
          </li>
        ))}
      </ul>
    </section>
  );
}

export function CompletenessSection() {
  const statuses = Object.entries(report.hardware?.status ?? {}).filter(([, status]) => ["partial", "unread", "unsupported"].includes(status.status));
  const software = report.software;
  return (
    <section id="completeness" aria-labelledby="title-completeness">
      <h2 id="title-completeness">Completeness</h2>
      {statuses.length === 0 && (!software || (software.complete && software.warnings.length === 0)) && <p>Everything was read.</p>}
      <ul>
        {statuses.map(([group, status]) => <li>{titleOf(group)}: {status.status}{status.text ? `, ${status.text}` : ""}</li>)}
        {(software?.undecided ?? []).map((one) => <li>It is unknown whether <Text value={one.name || one.guid} /> is present</li>)}
        {(software?.warnings ?? []).slice(0, 200).map((warning) => <li><Text value={warning.text ?? ""} /> <span class="muted"><Text value={warning.path ?? ""} /></span></li>)}
      </ul>
      {(software?.warnings.length ?? 0) > 200 && <p class="muted">The first 200 of {software!.warnings.length} warnings are shown.</p>}
    </section>
  );
}
