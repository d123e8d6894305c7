import { escaped, hasHidden, hiddenRuns } from "./format";

const kShown = 300;

// A value of the inventory. Characters that are not visible are shown as escapes; a very long value is cut.
export function Text({ value, whole = false }: { value: string; whole?: boolean }) {
  const cut = !whole && value.length > kShown;
  const text = cut ? value.slice(0, kShown) : value;
  const shown = hasHidden(text)
    ? text.split(hiddenRuns).map((part, i) => (i % 2 ? <span class="escape">{escaped(part)}</span> : part))
    : text;
  return <bdi>{shown}{cut && <span class="muted"> … {value.length.toLocaleString("en")} characters</span>}</bdi>;
}
