// node validate.mjs DOCUMENT...: checks each bill of materials, CycloneDX by the validator of that project with its strict
// schema, SPDX by the schema beside this file and by the rules that no schema states. Also checks that damaged documents
// are refused.
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';

const require = createRequire(process.env.ZAV_NODE_MODULES);
const {Spec: {Version}, Validation: {JsonStrictValidator}} = require('@cyclonedx/cyclonedx-library');
const Ajv = require('ajv').default;
const addFormats = require('ajv-formats').default;

const cycloneDx = new JsonStrictValidator(Version.v1dot6);
const ajv = new Ajv({allErrors: true, strictTuples: false});
addFormats(ajv);
const spdxSchema = ajv.compile(JSON.parse(readFileSync(new URL('spdx-2.3-written.schema.json', import.meta.url))));

function identifiersOf(document) {
  const all = [document.SPDXID, ...document.packages.map(p => p.SPDXID), ...(document.files ?? []).map(f => f.SPDXID)];
  const twice = all.filter((id, index) => all.indexOf(id) !== index);
  return {known: new Set(all), twice};
}

function spdxFaults(document) {
  if (!spdxSchema(document)) return spdxSchema.errors.slice(0, 5).map(e => `${e.instancePath} ${e.message}`);
  const {known, twice} = identifiersOf(document);
  const faults = twice.map(id => `${id} occurs twice`);
  const reached = new Set();
  for (const relationship of document.relationships) {
    for (const id of [relationship.spdxElementId, relationship.relatedSpdxElement])
      if (!known.has(id)) faults.push(`${id} is not defined`);
    if (relationship.relationshipType === 'OTHER') reached.add(relationship.spdxElementId);
    else reached.add(relationship.relatedSpdxElement);
  }
  for (const id of known)
    if (id !== document.SPDXID && !reached.has(id)) faults.push(`${id} has no relation`);
  return faults;
}

async function faultsOf(document) {
  if (document.spdxVersion) return spdxFaults(document);
  const faults = await cycloneDx.validate(JSON.stringify(document));
  return faults === null ? [] : faults.slice(0, 5).map(fault => `${fault.instancePath} ${fault.message}`);
}

function damaged(document) {
  const copies = [];
  const copy = change => {
    const other = structuredClone(document);
    change(other);
    copies.push(other);
  };
  copy(other => other.unknown = 1);
  if (document.spdxVersion) {
    copy(other => delete other.packages[0].downloadLocation);
    copy(other => other.packages[0].SPDXID = 'SPDXRef-a_b');
    copy(other => other.relationships[0].relatedSpdxElement = 'SPDXRef-missing');
  } else {
    copy(other => other.serialNumber = 'urn:uuid:1');
    copy(other => other.metadata.component.type = 'system');
    copy(other => delete other.metadata.component.name);
  }
  return copies;
}

let failed = false;
for (const path of process.argv.slice(2)) {
  const document = JSON.parse(readFileSync(path));
  const faults = await faultsOf(document);
  for (const other of damaged(document))
    if ((await faultsOf(other)).length === 0) faults.push('a damaged copy of the document is accepted');
  console.log(`${path}: ${faults.length === 0 ? 'valid' : faults.join('; ')}`);
  failed ||= faults.length > 0;
}
process.exit(failed || process.argv.length < 3 ? 1 : 0);
