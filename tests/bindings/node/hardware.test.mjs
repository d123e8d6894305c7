import assert from 'node:assert/strict';
import fs from 'node:fs';
import { createRequire } from 'node:module';
import os from 'node:os';
import test from 'node:test';

import { ZavError, codes } from 'zav';

import { Toolkit, bundled } from './toolkit.mjs';

const { forms } = createRequire(import.meta.url)(fs.realpathSync('node_modules/zav') + '/lib/catalogue.json');

const PACKAGE =
  '<SoftwarePackages><Name>größe 😀</Name><InstalledSize>686</InstalledSize>' +
  '<InstallDate>2026-11-21</InstallDate><Section></Section></SoftwarePackages>';

test('values have the types of the catalogue', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs(
    PACKAGE +
      '<Processor><Flags>fpu;vme</Flags><PhysicalPackageId>0</PhysicalPackageId></Processor>' +
      '<OperatingSystem><LastBootUpTime>2016-12-31T23:59:60Z</LastBootUpTime></OperatingSystem>' +
      '<IPv6Address><Temporary>false</Temporary></IPv6Address>',
  );
  const { groups } = await toolkit.library().hardware(['SoftwarePackages', 'Processor', 'OperatingSystem', 'IPv6Address']);
  const [found] = groups.SoftwarePackages;
  assert.equal(found.Name, 'größe 😀');
  assert.equal(found.InstalledSize, 686);
  assert.deepEqual(found.InstallDate, new Date('2026-11-21T00:00:00Z'));
  assert.deepEqual(groups.Processor[0].Flags, ['fpu', 'vme']);
  assert.equal(groups.Processor[0].PhysicalPackageId, 0);
  assert.deepEqual(groups.OperatingSystem[0].LastBootUpTime, new Date('2017-01-01T00:00:00Z'));
  assert.equal(groups.IPv6Address[0].Temporary, false);
});

test('missing values are null', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs(PACKAGE);
  const [found] = (await toolkit.library().hardware(['SoftwarePackages'])).groups.SoftwarePackages;
  assert.equal(found.Section, null);
  assert.equal(found.Architecture, null);
  assert.deepEqual(Object.keys(found), Object.keys(forms.SoftwarePackages));
});

for (const text of ['-1', '1_000', '0x10', ' 1', '1.5', '1e3']) {
  test(`value of another form is null and told: ${text}`, async (t) => {
    const toolkit = new Toolkit(t);
    toolkit.hardwareIs(`<SoftwarePackages><InstalledSize>${text}</InstalledSize></SoftwarePackages>`);
    const messages = [];
    const hardware = await toolkit.library({ log: ({ text }) => messages.push(text) }).hardware(['SoftwarePackages']);
    assert.equal(hardware.groups.SoftwarePackages[0].InstalledSize, null);
    assert.equal(hardware.texts('SoftwarePackages')[0].InstalledSize, text);
    assert.ok(messages.some((message) => message.includes('SoftwarePackages.InstalledSize')));
  });
}

test('field outside the catalogue is text, whatever its name is', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs('<Processor><Colour>12</Colour><__proto__>x</__proto__><constructor>y</constructor></Processor>');
  const [processor] = (await toolkit.library().hardware(['Processor'])).instances('Processor');
  assert.equal(processor.Colour, '12');
  assert.equal(Object.getOwnPropertyDescriptor(processor, '__proto__').value, 'x');
  assert.equal(processor.constructor, 'y');
});

test('groups are named by number too, and are in the order of their numbers', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs(PACKAGE);
  const hardware = await toolkit.library().hardware([25, 'Processor']);
  assert.deepEqual(Object.keys(hardware.groups), ['Processor', 'SoftwarePackages']);
  assert.deepEqual(hardware.groups.Processor, []);
  assert.throws(() => hardware.instances('Memory'), RangeError);
  assert.throws(() => hardware.instances('constructor'), RangeError);
});

test('without groups all are scanned', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs(PACKAGE);
  assert.deepEqual(Object.keys((await toolkit.library().hardware()).groups), Object.keys(forms));
});

test('status is what the scanner tells', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs(
    '<ScanInfo><GroupsComplete>Processor;ScanInfo</GroupsComplete><GroupsPartial>Memory=permission</GroupsPartial>' +
      '<GroupsUnread>Storage=timeout</GroupsUnread><GroupsNotApplicable>Lpar=other-processor</GroupsNotApplicable></ScanInfo>',
  );
  const hardware = await toolkit.library().hardware(['Processor', 'Memory', 'Storage', 'Lpar', 'Video']);
  assert.deepEqual(hardware.status, {
    Processor: { state: 'complete', reason: '' },
    Memory: { state: 'partial', reason: 'permission' },
    Storage: { state: 'unread', reason: 'timeout' },
    Video: { state: 'unknown', reason: '' },
    Lpar: { state: 'not-applicable', reason: 'other-processor' },
  });
  assert.equal(hardware.complete, false);
  assert.equal((await toolkit.library().hardware(['Processor', 'Lpar'])).complete, true);
});

test('failures have code, sentence and reasons, and the stack of the caller', async (t) => {
  const toolkit = new Toolkit(t);
  await assert.rejects(toolkit.library().hardware(['Procesor']), (error) => {
    assert.ok(error instanceof ZavError);
    assert.equal(error.code, codes.HW_GROUP);
    assert.match(error.message, /no such hardware group \(101\): "Procesor"; did you mean "Processor"\?/);
    return true;
  });
  await assert.rejects(toolkit.library().hardware(['Colours']), /"Colours"; the groups are ComponentID, Processor/);
  await assert.rejects(toolkit.library().hardware([18]), /18; the groups are ComponentID, Processor/);
  async function caller() {
    await toolkit.library().hardware(['Processor']);
  }
  await assert.rejects(caller(), (error) => {
    assert.equal(error.code, codes.HW_SCANNER);
    assert.equal(error.text, 'the hardware scanner could not be started, or it failed');
    assert.ok(error.reasons.some((reason) => reason.includes('ENOENT')));
    assert.match(error.stack, /caller/);
    return true;
  });
  toolkit.hardwareIs('<Processor>');
  await assert.rejects(toolkit.library().hardware(['Processor']), { code: codes.HW_OUTPUT });
  await assert.rejects(toolkit.library().hardware('Memory'), TypeError);
});

test('bundled scanner keeps the types', async () => {
  const { groups } = await bundled().hardware();
  const types = { text: 'string', count: 'number', integer: 'number', decimal: 'number', boolean: 'boolean', time: 'object' };
  let checked = 0;
  for (const [group, instances] of Object.entries(groups)) {
    for (const instance of instances) {
      assert.deepEqual(Object.keys(instance), Object.keys(forms[group]));
      for (const [field, value] of Object.entries(instance)) {
        if (value === null) continue;
        const [kind, list] = forms[group][field].split(' ');
        assert.equal(Array.isArray(value), list !== undefined, `${group}.${field}`);
        for (const one of list ? value : [value]) assert.equal(typeof one, types[kind], `${group}.${field}`);
        if (kind === 'time') assert.ok(value instanceof Date && !Number.isNaN(value.getTime()));
        checked += 1;
      }
    }
  }
  assert.ok(checked > 50);
  assert.equal(groups.Processor.filter(({ EnabledState }) => EnabledState === 'Enabled').length, os.cpus().length);
  // What JSON cannot say would be lost on the way to a file.
  assert.deepEqual(Object.keys(JSON.parse(JSON.stringify(groups))), Object.keys(groups));
});

test('messages are passed while the scan runs', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareWaits();
  const messages = [];
  const stop = new AbortController();
  const log = (message) => {
    messages.push(message);
    if (message.component === 3 && !stop.signal.aborted) stop.abort();
  };
  await assert.rejects(toolkit.library({ log, logLevel: 2 }).hardware(['Processor'], { signal: stop.signal }));
  assert.deepEqual(new Set(messages.map(({ component }) => component)), new Set([1, 3]));
  assert.ok(messages.every(({ level, function: name, text }) => level <= 2 && name !== '' && typeof text === 'string'));
});

test('messages above the level are not passed', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs(PACKAGE);
  const levels = new Set();
  await toolkit.library({ log: ({ level }) => levels.add(level), logLevel: 0 }).hardware(['Processor']);
  assert.deepEqual(levels, new Set([0]));
});
