// Prints the processors of this machine and the version of the installed bash.
// With an argument, the scanners are in that directory.
import { Library } from 'zav';

const bash = `
<Signature guid='bash' name='GNU Bash'>
  <Match><Package id='p' name='bash'/></Match>
  <Output><Variable name='version' value='\${p.upstream}'/></Output>
</Signature>`;

const library = new Library('my product', {
  toolkit: process.argv[2],
  log: ({ level, text }) => {
    if (level === 0) console.error(text);
  },
});
const [hardware, software] = await Promise.all([library.hardware(['Processor']), library.software(bash)]);
for (const processor of hardware.groups.Processor) console.log(processor.DeviceID, processor.Name);
for (const result of software.results) console.log(result.guid, result.variables.version);
