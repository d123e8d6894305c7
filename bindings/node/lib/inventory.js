'use strict';

// What scans and evaluations return: copies that do not depend on the library.

const { forms } = require('./catalogue.json');
const { valueOf } = require('./convert.js');

const LISTS = [
  ['GroupsUnread', 'unread'],
  ['GroupsPartial', 'partial'],
  ['GroupsUnsupported', 'unsupported'],
  ['GroupsNotApplicable', 'not-applicable'],
  ['GroupsComplete', 'complete'],
];

class Hardware {
  #texts;

  constructor({ texts, scanInfo }, warn) {
    this.#texts = texts;
    this.groups = {};
    this.status = {};
    for (const [group, instances] of Object.entries(texts)) {
      this.groups[group] = instances.map((instance) => recordOf(group, instance, warn));
      this.status[group] = statusOf(group, scanInfo);
    }
  }

  instances(group) {
    return known(this.groups, group);
  }

  texts(group) {
    return known(this.#texts, group);
  }

  get complete() {
    return Object.values(this.status).every(({ state }) => state === 'complete' || state === 'not-applicable');
  }
}

class Software {
  constructor({ results, warnings }) {
    this.results = results;
    this.warnings = warnings;
  }

  find(guid) {
    return this.results.filter((result) => result.guid === guid);
  }

  rows() {
    return this.results.map(({ guid, variables }) => ({ guid, ...variables }));
  }
}

function known(groups, group) {
  if (!Object.hasOwn(groups, group)) throw new RangeError(`the scan was not asked for the group ${group}`);
  return groups[group];
}

function recordOf(group, texts, warn) {
  const types = forms[group] ?? {};
  const record = Object.fromEntries(Object.keys(types).map((field) => [field, null]));
  for (const [field, text] of Object.entries(texts)) {
    const form = Object.hasOwn(types, field) ? types[field] : 'text';
    const value = valueOf(form, text);
    if (value === undefined) warn(`${group}.${field} is ${JSON.stringify(text)}, which is not of the type ${form}; texts() has it`);
    Object.defineProperty(record, field, { value: value ?? null, enumerable: true, configurable: true, writable: true });
  }
  return record;
}

function statusOf(group, scanInfo) {
  // A group that is in several lists has the state of the first one.
  for (const [field, state] of LISTS) {
    for (const entry of (scanInfo[field] ?? '').split(';')) {
      const [name, reason = ''] = entry.split('=');
      if (name !== group) continue;
      return state === 'partial' && reason === 'unsupported' ? { state: 'unsupported', reason: '' } : { state, reason };
    }
  }
  return { state: 'unknown', reason: '' };
}

module.exports = { Hardware, Software };
