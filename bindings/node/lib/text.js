'use strict';

// Text as the library takes it: one character for each byte.
function wideText(text) {
  const bytes = typeof text === 'string' ? Buffer.from(text, 'utf8') : Buffer.from(text);
  if (bytes.includes(0)) throw new TypeError('a text for the library contains a NUL character');
  return bytes.toString('latin1');
}

const ESCAPES = { '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;', '\t': '&#9;', '\n': '&#10;', '\r': '&#13;' };

// Text as the library takes it where it becomes a part of XML.
function xmlText(text) {
  return wideText(String(text).replace(/[&<>"\t\n\r]/g, (character) => ESCAPES[character]));
}

module.exports = { wideText, xmlText };
