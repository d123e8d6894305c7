import { render } from "preact";
import { useEffect, useRef, useState } from "preact/hooks";
import { first, report } from "./data";
import { compare } from "./format";
import { ChangesSection, CompletenessSection, GroupSection, SoftwareSection, titleOf } from "./Groups";
import { Overview } from "./Overview";
import { Text } from "./Text";

const groups = Object.keys(report.hardware?.groups ?? {}).filter((group) => report.hardware!.groups[group].length > 0)
  .sort((a, b) => compare(titleOf(a), titleOf(b)));
const texts = new Map<string, string>();
const textOf = (group: string) => {
  let text = texts.get(group);
  if (text === undefined) texts.set(group, (text = report.hardware!.groups[group].map((row) => Object.values(row).join("\n")).join("\n\0").toLowerCase()));
  return text;
};

function App() {
  const [query, setQuery] = useState("");
  const search = useRef<HTMLInputElement>(null);
  useEffect(() => {
    const focus = (event: KeyboardEvent) => {
      if (event.key !== "/" || event.target instanceof HTMLInputElement) return;
      event.preventDefault();
      search.current?.focus();
    };
    addEventListener("keydown", focus);
    return () => removeEventListener("keydown", focus);
  }, []);
  const words = query.toLowerCase().split(/\s+/).filter(Boolean);
  const matching = words.length ? groups.filter((group) => words.every((word) => textOf(group).includes(word))) : groups;
  const host = first("ComponentID").Name || first("OperatingSystem").CSName || report.software?.scan.host || "This machine";
  const time = report.hardware?.scan.time || report.software?.scan.time || "";
  return (
    <>
      <a class="skip" href="#main">Skip to the content</a>
      <header>
        <h1><Text value={host} /></h1>
        <span class="muted">{time.replace("T", " ").replace("Z", " UTC")}{report.hardware?.scan.privileged === false && ", without the rights of root"}{report.hardware?.scan.sanitized && ", sanitized"}</span>
        <input ref={search} id="search" type="search" placeholder="Search everything  ( / )" aria-label="Search everything" value={query}
               onInput={(event) => setQuery(event.currentTarget.value)} />
      </header>
      <div class="columns">
        <nav aria-label="Contents">
          <ul>
            {report.hardware && <li><a href="#overview">Overview</a></li>}
            {report.changes && <li><a href="#changes">Changes</a></li>}
            {report.software && <li><a href="#software">Recognised software</a></li>}
            <li><a href="#completeness">Completeness</a></li>
            {matching.map((group) => <li><a href={`#group-${group}`}>{titleOf(group)} <span class="muted">{report.hardware!.groups[group].length}</span></a></li>)}
          </ul>
        </nav>
        <main id="main" tabIndex={-1}>
          {!words.length && report.hardware && <Overview />}
          {!words.length && report.changes && <ChangesSection />}
          {report.software && <SoftwareSection query={query} />}
          {matching.map((group) => <GroupSection key={group} group={group} query={query} />)}
          {words.length > 0 && matching.length === 0 && <p role="status">No group contains this.</p>}
          {!words.length && <CompletenessSection />}
        </main>
      </div>
    </>
  );
}

document.title = `${first("ComponentID").Name || "Machine"} - inventory`;
render(<App />, document.getElementById("app")!);
performance.mark("interactive");
