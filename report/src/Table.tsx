import { useEffect, useMemo, useState } from "preact/hooks";
import { Fragment, type ComponentChildren } from "preact";
import { compare } from "./format";
import { Text } from "./Text";

export interface Column<T> {
  name: string;
  title?: string;
  numeric?: boolean;
  value: (row: T) => string;
  show?: (row: T) => ComponentChildren;
}
interface Props<T> {
  id: string; label: string; rows: T[]; columns: Column<T>[];
  query: string;
  searchText: (row: T) => string;
  detail: (row: T) => ComponentChildren;
  badge?: (row: T) => ComponentChildren;
}

const kPage = 50;

// A part of the rows at a time, so that many open at once; all of them on paper or on request.
export function Table<T>({ id, label, rows, columns, query, searchText, detail, badge }: Props<T>) {
  const [own, setOwn] = useState("");
  const [sort, setSort] = useState<{ column: number; down: boolean } | null>(null);
  const [page, setPage] = useState(0);
  const [all, setAll] = useState(false);
  const [printing, setPrinting] = useState(false);
  const [open, setOpen] = useState<ReadonlySet<T>>(new Set());

  useEffect(() => {
    const before = () => setPrinting(true);
    const after = () => setPrinting(false);
    addEventListener("beforeprint", before);
    addEventListener("afterprint", after);
    return () => { removeEventListener("beforeprint", before); removeEventListener("afterprint", after); };
  }, []);
  useEffect(() => setPage(0), [query, own, sort]);

  const texts = useMemo(() => new Map<T, string>(), [rows]);
  const found = useMemo(() => {
    const words = `${query} ${own}`.toLowerCase().split(/\s+/).filter(Boolean);
    const textOf = (row: T) => {
      let text = texts.get(row);
      if (text === undefined) texts.set(row, (text = searchText(row).toLowerCase()));
      return text;
    };
    const list = words.length ? rows.filter((row) => words.every((word) => textOf(row).includes(word))) : rows.slice();
    if (sort) {
      const { value, numeric } = columns[sort.column];
      const order = numeric ? (a: T, b: T) => Number(value(a) || -1) - Number(value(b) || -1)
                            : (a: T, b: T) => compare(value(a), value(b));
      list.sort(sort.down ? (a, b) => order(b, a) : order);
    }
    return list;
  }, [rows, query, own, sort]);

  const pages = Math.max(1, Math.ceil(found.length / kPage));
  const shown = all || printing ? found : found.slice(page * kPage, (page + 1) * kPage);
  const toggle = (row: T) => {
    const next = new Set(open);
    if (!next.delete(row)) next.add(row);
    setOpen(next);
  };
  const sortBy = (column: number) =>
    setSort(sort?.column === column ? (sort.down ? null : { column, down: true }) : { column, down: false });

  return (
    <div class="table">
      {rows.length > 8 && (
        <div class="tools">
          <input type="search" id={`${id}-search`} aria-label={`Search ${label}`} placeholder={`Search ${label}`} value={own}
                 onInput={(event) => setOwn(event.currentTarget.value)} />
          <span role="status" class="muted">{found.length === rows.length ? "" : `${found.length} of `}{rows.length.toLocaleString("en")}</span>
          {found.length > kPage && (
            <span class="pager">
              {!all && <>
                <button disabled={page === 0} onClick={() => setPage(page - 1)} aria-label={`Previous page of ${label}`}>‹</button>
                <span class="muted">{page + 1} / {pages}</span>
                <button disabled={page + 1 >= pages} onClick={() => setPage(page + 1)} aria-label={`Next page of ${label}`}>›</button>
              </>}
              <button aria-pressed={all} onClick={() => setAll(!all)}>Show all</button>
            </span>
          )}
        </div>
      )}
      <div class="scroll" tabIndex={0} role="region" aria-label={`Table of ${label}`}>
        <table>
          <thead><tr>
            <th scope="col" class="more"><span class="hidden">Details</span></th>
            {columns.map((column, i) => (
              <th scope="col" class={column.numeric ? "number" : ""}
                  aria-sort={sort?.column === i ? (sort.down ? "descending" : "ascending") : "none"}>
                <button class="sort" title={column.title} onClick={() => sortBy(i)}>
                  {column.name}<span aria-hidden="true">{sort?.column === i ? (sort.down ? " ▾" : " ▴") : ""}</span>
                </button>
              </th>
            ))}
          </tr></thead>
          <tbody>
            {shown.map((row) => (
              <Fragment>
                <tr>
                  <td class="more">
                    <button aria-expanded={open.has(row)} aria-label={`Details of ${columns[0]?.value(row).slice(0, 80) || "row"}`}
                            onClick={() => toggle(row)}>{open.has(row) ? "▾" : "▸"}</button>
                  </td>
                  {columns.map((column, i) => (
                    <td class={column.numeric ? "number" : ""}>
                      {i === 0 && badge?.(row)}
                      {column.show ? column.show(row) : <Text value={column.value(row)} />}
                    </td>
                  ))}
                </tr>
                {open.has(row) && <tr class="detail"><td colSpan={columns.length + 1}>{detail(row)}</td></tr>}
              </Fragment>
            ))}
            {shown.length === 0 && <tr><td class="muted" colSpan={columns.length + 1}>Nothing found.</td></tr>}
          </tbody>
        </table>
      </div>
    </div>
  );
}
