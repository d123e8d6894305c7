'use strict';

const FORMS = {
  count: /^\d+$/,
  integer: /^-?\d+$/,
  decimal: /^\d+\.\d+$/,
  boolean: /^(true|false)$/,
  time: /^(\d{4}-\d\d-\d\d)(?:T(\d\d:\d\d):(\d\d)Z)?$/,
};

function time(text) {
  const [, day, minutes, seconds] = FORMS.time.exec(text);
  // A leap second has the number 60, which Date does not know.
  const start = Date.parse(`${day}T${minutes ?? '00:00'}:00Z`);
  return new Date(start + 1000 * Number(seconds ?? 0));
}

const CONVERSIONS = {
  text: (text) => text,
  count: Number,
  integer: Number,
  decimal: Number,
  boolean: (text) => text === 'true',
  time,
};

/**
 * The value of a text that has this form: "count", "text list". null for an empty text, which means unknown; undefined for a
 * text that does not have its form.
 */
function valueOf(form, text) {
  if (text === '') return null;
  const [kind, list] = form.split(' ');
  const texts = list ? text.split(';') : [text];
  if (kind !== 'text' && !texts.every((one) => FORMS[kind].test(one))) return undefined;
  const values = texts.map(CONVERSIONS[kind]);
  if (kind === 'time' && values.some(Number.isNaN)) return undefined;
  return list ? values : values[0];
}

module.exports = { valueOf };
