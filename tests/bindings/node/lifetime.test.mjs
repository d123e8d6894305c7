// The ends of libraries, scans and processes.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import test from 'node:test';

import { Library, codes } from 'zav';

import { Toolkit, hasEnded } from './toolkit.mjs';

test('closed library is refused', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareIs('');
  const library = toolkit.library();
  const running = library.hardware(['Processor']);
  library.close();
  await assert.rejects(library.hardware(['Processor']), /closed/);
  assert.deepEqual((await running).groups.Processor, []);
});

test('missing shared library is told with advice', async () => {
  await assert.rejects(new Library('tests', { library: '/nowhere/libzav.so.1' }).hardware(), /nowhere.*libzav1/);
});

test('missing temporary directory is an error', async () => {
  await assert.rejects(new Library('tests', { tempDirectory: '/nowhere' }).hardware(), { code: codes.WORKSPACE });
});

test('scans overlap, and the event loop goes on', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.script('quorvah', 'sleep 0.5; echo "<H><Processor><Name>one</Name></Processor></H>" >"$4"');
  let turns = 0;
  const ticking = setInterval(() => (turns += 1), 10);
  const found = await Promise.all([1, 2, 3, 4].map(() => toolkit.library().hardware(['Processor'])));
  clearInterval(ticking);
  assert.deepEqual(found.map(({ groups }) => groups.Processor[0].Name), ['one', 'one', 'one', 'one']);
  assert.ok(turns > 10);
});

for (const [scanner, atTerm] of [['polite scanner', 'exit 1'], ['scanner that ignores the signal', '']]) {
  test(`scan ends at the time limit: ${scanner}`, async (t) => {
    const toolkit = new Toolkit(t);
    toolkit.hardwareWaits(atTerm);
    await assert.rejects(toolkit.library({ timeout: 3000 }).hardware(['Processor']), { name: 'TimeoutError' });
    assert.ok(hasEnded(await toolkit.waitingScanner()));
  });
}

test('signal ends the scan', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareWaits();
  const stop = new AbortController();
  const scan = toolkit.library().hardware(['Processor'], { signal: stop.signal });
  const scanner = await toolkit.waitingScanner();
  stop.abort(new Error('enough'));
  await assert.rejects(scan, /enough/);
  assert.ok(hasEnded(scanner));
  await assert.rejects(toolkit.library().hardware(['Processor'], { signal: stop.signal }), /enough/);
});

test('process.exit() does not wait for the end of a scan', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.hardwareWaits('');
  // Its temporary directory is left, because the process does not wait.
  const program = `
    import { Library } from 'zav';
    new Library('tests', { toolkit: ${JSON.stringify(toolkit.path)} }).hardware(['Processor']);
    process.stdin.on('data', () => process.exit(7));`;
  const environment = { ...process.env, TMPDIR: toolkit.path, TEMP: toolkit.path, TMP: toolkit.path };
  const host = spawn(process.execPath, ['--input-type=module', '--eval', program], { stdio: ['pipe', 'inherit', 'inherit'], env: environment });
  const scanner = await toolkit.waitingScanner();
  host.stdin.write('\n');
  const [status] = await once(host, 'exit');
  assert.equal(status, 7);
  assert.ok(hasEnded(scanner));
});
