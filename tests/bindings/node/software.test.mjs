import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import test from 'node:test';
import { pathToFileURL } from 'node:url';

import { codes } from 'zav';

import { Toolkit, bundled } from './toolkit.mjs';

const MATCH =
  "<MatchedSignature guid='a'><Variable name='version' value='1.ü😀'/><Variable name='path' value='/bin/a'/>" +
  "<Metadata><Maker>ü😀</Maker></Metadata></MatchedSignature><MatchedSignature guid='b'/>";

test('results are copied', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.softwareIs(MATCH, '<Event><Name>ü</Name></Event>');
  const software = await toolkit.library().software("<Signature guid='a'/>");
  const [first, second] = software.results;
  assert.deepEqual(first.variables, { path: '/bin/a', version: '1.ü😀' });
  assert.match(first.metadata, /<Maker>ü😀<\/Maker>/u);
  assert.deepEqual(second, { guid: 'b', variables: {}, metadata: '' });
  assert.equal(software.warnings.length, 1);
  assert.match(software.warnings[0], /ü/);
  assert.deepEqual(software.find('a'), [first]);
  assert.deepEqual(software.find('c'), []);
  assert.deepEqual(software.rows(), [{ guid: 'a', path: '/bin/a', version: '1.ü😀' }, { guid: 'b' }]);
});

test('signatures reach the scanner in UTF-8, and bytes as they are', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.softwareIs('');
  const lone = Buffer.concat([Buffer.from("<Signature guid='"), Buffer.from([0xff]), Buffer.from("'/>")]);
  await toolkit.library().software(["<Signature guid='ü😀'/>", lone]);
  assert.ok(toolkit.seen('signatures').includes(Buffer.from("guid='ü😀'")));
  assert.ok(toolkit.seen('signatures').includes(lone));
  assert.deepEqual((await toolkit.library().software([])).results, []);
});

test('variables and settings are escaped', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.softwareIs('');
  await toolkit.library().software("<Signature guid='a'/>", {
    variables: [['a', 'minimum', '<"2" & ü>\n']],
    settings: [['Secrets', 'allow', '/root']],
  });
  const seen = toolkit.seen('config').toString();
  assert.ok(seen.includes('&lt;&quot;2&quot; &amp; ü&gt;&#10;'), seen);
  assert.ok(seen.includes('/root'));
});

test('NUL in a text is refused', async (t) => {
  await assert.rejects(new Toolkit(t).library().software("<Signature guid='\0'/>"), TypeError);
});

test('refused signature and missing file are errors', async () => {
  await assert.rejects(bundled().software('<Signature'), { code: codes.SW_SIGNATURE });
  await assert.rejects(bundled().softwareFile('/nowhere/none.xml'), { code: 'ENOENT' });
});

test('file of any name is evaluated', async (t) => {
  const toolkit = new Toolkit(t);
  toolkit.softwareIs(MATCH);
  for (const name of [Buffer.from([0xff, 0x20, 0xc3, 0xa9]), Buffer.from('plain.xml')]) {
    const file = Buffer.concat([Buffer.from(toolkit.path + '/'), name]);
    fs.writeFileSync(file, '<Signatures/>');
    assert.equal((await toolkit.library().softwareFile(file)).results.length, 2);
    assert.equal(toolkit.seen('signatures').toString(), '<Signatures/>');
  }
  const url = pathToFileURL(path.join(toolkit.path, 'plain.xml'));
  assert.equal((await toolkit.library().softwareFile(url)).results.length, 2);
});

test('bundled scanner is read', async () => {
  const { results } = await bundled().software(
    "<Signature guid='env' name='Environments ü'><Match><File id='f' path='/usr/bin/env'/></Match>" +
      "<Output><Variable name='text' value='ü😀'/></Output></Signature>",
  );
  assert.equal(results.length, 1);
  assert.deepEqual(results[0].variables, { text: 'ü😀' });
  assert.match(results[0].metadata, /<MatchedName>Environments ü<\/MatchedName>/);
});
