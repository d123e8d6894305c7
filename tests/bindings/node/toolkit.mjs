// Toolkits for the tests: that of the build, and such whose scanners are scripts.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { setTimeout as wait } from 'node:timers/promises';

import { Library } from 'zav';

export class Toolkit {
  // The directory is removed after the test, when no temporary file of the library may be left.
  constructor(test) {
    const directory = fs.mkdtempSync(path.join(os.tmpdir(), 'zavtest_'));
    this.path = path.join(directory, 'toolkit');
    this.temp = path.join(directory, 'temp é');
    fs.mkdirSync(this.path);
    fs.mkdirSync(this.temp);
    test.after(() => {
      const left = fs.readdirSync(this.temp);
      fs.rmSync(directory, { recursive: true });
      assert.deepEqual(left, []);
    });
  }

  script(scanner, text) {
    fs.writeFileSync(path.join(this.path, scanner), `#!/bin/sh\n${text}\n`, { mode: 0o755 });
  }

  // The hardware scanner writes these instances. Its arguments are -c CONFIG -o OUTPUT.
  hardwareIs(xml) {
    fs.writeFileSync(path.join(this.path, 'hardware.xml'), `<Hardware>${xml}</Hardware>`);
    this.script('quorvah', `cat "${this.path}/hardware.xml" >"$4"`);
  }

  // The signature scanner writes these matches. Its arguments are -c CONFIG -o OUTPUT -e WARNINGS -i SIGNATURES.
  softwareIs(xml, warnings = '') {
    fs.writeFileSync(path.join(this.path, 'software.xml'), `<Software>${xml}</Software>`);
    fs.writeFileSync(path.join(this.path, 'warnings.xml'), `<Events>${warnings}</Events>`);
    this.script(
      'quorvis',
      `cp "$2" "${this.path}/seen_config"; cp "$8" "${this.path}/seen_signatures"
       cat "${this.path}/software.xml" >"$4"; cat "${this.path}/warnings.xml" >"$6"`,
    );
  }

  // The hardware scanner tells its process number and waits. `atTerm` is what it does with the signal TERM.
  hardwareWaits(atTerm = 'exit 1') {
    const file = `${this.path}/scanner`;
    this.script(
      'quorvah',
      `trap "${atTerm}" TERM; echo $$ >"${file}.new"; mv "${file}.new" "${file}"; while :; do sleep 0.1; done`,
    );
  }

  async waitingScanner() {
    const file = `${this.path}/scanner`;
    for (const end = Date.now() + 30000; !fs.existsSync(file); await wait(10)) assert.ok(Date.now() < end, 'no scanner');
    return Number(fs.readFileSync(file, 'ascii'));
  }

  seen(name) {
    return fs.readFileSync(path.join(this.path, `seen_${name}`));
  }

  library(options = {}) {
    return new Library('tests', { toolkit: this.path, tempDirectory: this.temp, ...options });
  }
}

export function bundled() {
  return new Library('tests', { toolkit: process.env.ZAV_TEST_TOOLKIT });
}

export function hasEnded(number) {
  try {
    const stat = fs.readFileSync(`/proc/${number}/stat`, 'latin1');
    return stat.slice(stat.lastIndexOf(')') + 2)[0] === 'Z';
  } catch {
    return true;
  }
}
