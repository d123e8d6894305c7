'use strict';

const { constants } = require('node:fs');
const fs = require('node:fs/promises');
const path = require('node:path');
const { fileURLToPath } = require('node:url');

const { ZavError, codes } = require('./errors.js');
const { Hardware, Software } = require('./inventory.js');
const { scan } = require('./scan.js');
const { wideText, xmlText } = require('./text.js');

const LIBRARY = 'libzav.so.1';

class Library {
  #settings;
  #log;
  #timeout;
  #closed = false;

  constructor(name, { toolkit, tempDirectory, library, log, logLevel = 1, timeout } = {}) {
    if (typeof name !== 'string') throw new TypeError("the first argument is the calling product's name");
    this.#settings = {
      name,
      toolkit: toolkit === undefined ? null : wideText(pathOf(toolkit)),
      tempDirectory: tempDirectory === undefined ? null : wideText(pathOf(tempDirectory)),
      library: library === undefined ? process.env.ZAV_LIBRARY || LIBRARY : String(pathOf(library)),
      logLevel: log === undefined ? -1 : logLevel,
      noSuchGroup: codes.HW_GROUP,
    };
    this.#log = log;
    this.#timeout = timeout;
  }

  async hardware(groups, options = {}) {
    if (typeof groups === 'string') throw new TypeError(`groups is a list of names: ["${groups}"]`);
    const found = await this.#scan({ groups: groups === undefined ? null : [...groups] }, options);
    return new Hardware(found, (text) => this.#log?.({ level: 0, component: 3, function: 'hardware', text }));
  }

  async software(signatures, options = {}) {
    const isOne = typeof signatures === 'string' || signatures instanceof Uint8Array;
    const texts = (isOne ? [signatures] : [...signatures]).map(wideText);
    return this.#evaluate({ signatures: texts }, options);
  }

  async softwareFile(file, options = {}) {
    const name = pathOf(file);
    // The library does not say why a file cannot be read.
    await (await fs.open(name, constants.O_RDONLY | constants.O_NONBLOCK)).close();
    const absolute = typeof name === 'string' ? path.resolve(name) : name;
    return this.#evaluate({ file: wideText(absolute) }, options);
  }

  close() {
    this.#closed = true;
  }

  async #evaluate(evaluation, { variables = [], settings = [], ...options }) {
    const escaped = { variables: variables.map((texts) => texts.map(xmlText)), settings: settings.map((texts) => texts.map(xmlText)) };
    return new Software(await this.#scan({ evaluation: { ...evaluation, ...escaped } }, options));
  }

  async #scan(job, { signal, timeout = this.#timeout }) {
    if (this.#closed) throw new Error('the library is closed');
    try {
      return await scan({ ...this.#settings, ...job }, { signal, timeout, log: this.#log });
    } catch (error) {
      // The stack of the caller tells more than that of the event.
      if (error instanceof ZavError) Error.captureStackTrace(error);
      throw error;
    }
  }
}

if (Symbol.dispose) Library.prototype[Symbol.dispose] = Library.prototype.close;

function pathOf(file) {
  return file instanceof URL ? fileURLToPath(file) : file;
}

exports.Hardware = Hardware;
exports.Library = Library;
exports.Software = Software;
exports.ZavError = ZavError;
exports.codes = codes;
