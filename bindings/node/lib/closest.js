'use strict';

// How many characters must be inserted, removed or replaced.
function distance(a, b) {
  let row = Array.from({ length: b.length + 1 }, (_, column) => column);
  for (let i = 1; i <= a.length; ++i) {
    const next = [i];
    for (let j = 1; j <= b.length; ++j) {
      next[j] = Math.min(row[j] + 1, next[j - 1] + 1, row[j - 1] + (a[i - 1] === b[j - 1] ? 0 : 1));
    }
    row = next;
  }
  return row[b.length];
}

/** The name that the text may stand for; undefined if none is like it. */
function closest(text, names) {
  if (text.length > 100) return undefined;
  const wanted = text.toLowerCase();
  const [best] = names.map((name) => ({ name, away: distance(wanted, name.toLowerCase()) })).sort((a, b) => a.away - b.away);
  return best && best.away <= Math.max(2, best.name.length / 3) ? best.name : undefined;
}

module.exports = { closest };
