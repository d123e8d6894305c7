'use strict';

const { codes, sentences } = require('./catalogue.json');

/** A call of the library failed: its code, the sentence for it, and what the library said about it. */
class ZavError extends Error {
  constructor(code, reasons = []) {
    const text = sentences[code] ?? 'unknown return code';
    super([`${text} (${code})`, ...(reasons.length ? [reasons.join('; ')] : [])].join(': '));
    this.name = 'ZavError';
    this.code = code;
    this.text = text;
    this.reasons = reasons;
  }
}

module.exports = { ZavError, codes: Object.freeze(codes) };
