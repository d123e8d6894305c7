'use strict';

// One scan, in a thread of its own: opens a handle, scans, sends copies of what was found, and frees the handle.

const fs = require('node:fs');
const { parentPort, workerData } = require('node:worker_threads');

const { closest } = require('./closest.js');
const native = require('./native.js');

const LAST_GROUP = 51;
const TRACE = 2;

class Failure extends Error {
  constructor(code, reasons) {
    super(`code ${code}`);
    this.failure = { code, reasons };
  }
}

class Scan {
  constructor(settings) {
    this.settings = settings;
    this.functions = native.load(settings.library);
    this.reasons = [];
    this.handle = null;
    this.context = null;
    this.kind = '';
    this.callback = native.koffi.register((...message) => this.log(...message), native.LogCallback);
  }

  open() {
    const { name, tempDirectory, toolkit } = this.settings;
    this.handle = this.pointer('init', name, this.callback, null, tempDirectory, toolkit);
  }

  hardware(groups) {
    this.kind = 'hw';
    this.context = this.pointer('hw_init', this.handle, this.callback, null);
    const names = this.groupNames();
    const info = [...names].find(([, name]) => name === 'ScanInfo')[0];
    const wanted = groups === null ? [...names.keys()] : groups.map((group) => numberOf(group, names));
    const numbers = [...new Set(wanted)].sort((a, b) => a - b);
    // The scanner tells there how completely it has read the others.
    for (const number of new Set([...numbers, info])) this.call('hw_setopt', this.context, number, 1);
    this.call('hw_run', this.context);
    const texts = Object.fromEntries(numbers.map((number) => [names.get(number), this.instances(number)]));
    return { texts, scanInfo: this.instances(info)[0] ?? {} };
  }

  software({ variables, settings, signatures, file }) {
    this.kind = 'sw';
    this.context = this.pointer('sw_init', this.handle, this.callback, null);
    for (const [guid, name, value] of variables) this.call('sw_setopt_variable', this.context, name, value, guid);
    for (const setting of settings) this.call('sw_setopt_config', this.context, ...setting);
    if (file !== undefined) this.call('sw_evaluate_file', this.context, file);
    else this.call('sw_evaluate_multi', this.context, [...signatures, null], signatures.length);
    const results = this.array('sw_get_results', this.context).map((result) => this.result(result));
    return { results, warnings: this.array('sw_get_warnings', this.context).map(native.bytesAt) };
  }

  close() {
    if (this.context) this.functions[`${this.kind}_free`](this.context);
    if (this.handle) this.functions.free(this.handle);
    native.koffi.unregister(this.callback);
  }

  groupNames() {
    const names = new Map();
    const name = [null];
    for (let number = 1; number <= LAST_GROUP; ++number) {
      if (this.functions.hw_get_group_name(this.context, number, name) === 0) names.set(number, native.textAt(name[0]));
    }
    return names;
  }

  instances(group) {
    const count = [0];
    this.call('hw_get_group_instances', this.context, group, count);
    const value = [null];
    // The names of the fields are the same texts in all instances.
    const names = new Map();
    return Array.from({ length: count[0] }, (_, instance) => {
      const texts = {};
      for (const name of this.array('hw_get_fields', this.context, group, instance)) {
        this.call('hw_get_value', this.context, group, instance, name, value);
        if (!names.has(name)) names.set(name, native.textAt(name));
        setOwn(texts, names.get(name), native.textAt(value[0]));
      }
      return texts;
    });
  }

  result(result) {
    const variables = {};
    for (const name of this.array('sw_get_variables', this.context, result)) {
      setOwn(variables, native.textAt(name), native.textAt(this.pointer('sw_get_value', this.context, result, name)));
    }
    return {
      guid: native.textAt(this.pointer('sw_get_guid', this.context, result)),
      variables,
      metadata: native.bytesAt(this.pointer('sw_get_metadata', this.context, result)),
    };
  }

  pointer(name, ...values) {
    const address = [null];
    this.call(name, ...values, address);
    return address[0];
  }

  array(name, ...values) {
    const address = [null];
    const count = [0];
    this.call(name, ...values, address, count);
    return native.addressesAt(address[0], count[0]);
  }

  call(name, ...values) {
    this.reasons.length = 0;
    const code = this.functions[name](...values);
    if (code !== 0) throw new Failure(code, [...this.reasons]);
  }

  log(level, component, userData, name, message) {
    // The library sends a trace for each value that is read.
    const wanted = level <= this.settings.logLevel;
    if (!wanted && level !== 0) return;
    const text = native.messageAt(message).replace(/\n+$/, '');
    if (level === 0) this.reasons.push(text);
    if (wanted) parentPort.postMessage({ log: { level, component, function: native.messageAt(name), text } });
  }
}

// A name such as "__proto__" must not change the object.
function setOwn(object, name, value) {
  Object.defineProperty(object, name, { value, enumerable: true, configurable: true, writable: true });
}

function numberOf(group, names) {
  for (const [number, name] of names) {
    if (group === number || group === name) return number;
  }
  const close = closest(String(group), [...names.values()]);
  const advice = close ? `did you mean "${close}"?` : `the groups are ${[...names.values()].join(', ')}`;
  throw new Failure(workerData.noSuchGroup, [`${JSON.stringify(group)}; ${advice}`]);
}

function run() {
  // The link is PROCESS/task/THREAD.
  parentPort.postMessage({ thread: fs.readlinkSync('/proc/thread-self') });
  native.useUtf8Messages();
  const scan = new Scan(workerData);
  try {
    scan.open();
    const { groups, evaluation } = workerData;
    return evaluation ? scan.software(evaluation) : scan.hardware(groups);
  } finally {
    scan.close();
  }
}

try {
  parentPort.postMessage({ found: run() });
} catch (error) {
  parentPort.postMessage(error.failure ? { failure: error.failure } : { error: error.message });
}
