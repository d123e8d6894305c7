// build.mjs FILE: writes the page without data to this file. The same sources give the same file.
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));

async function bundle(entry) {
  const result = await build({
    absWorkingDir: here, entryPoints: [entry], bundle: true, minify: true, write: false, charset: "ascii", format: "iife",
    target: ["chrome100", "firefox100", "safari15.4"], jsx: "automatic", jsxImportSource: "preact", legalComments: "inline",
  });
  return result.outputFiles[0].text.trim();
}
const hash = (text) => `sha256-${createHash("sha256").update(text).digest("base64")}`;

const script = await bundle("src/main.tsx");
const style = await bundle("src/style.css");
for (const text of [script, style])
  if (/<\/(script|style)|<!--|@ZAV_DATA@/i.test(text)) throw new Error("the bundle would end its element");
const values = { SCRIPT_HASH: hash(script), STYLE_HASH: hash(style), SCRIPT: script, STYLE: style };
const page = readFileSync(join(here, "page.html"), "utf8").replace(/@(SCRIPT_HASH|STYLE_HASH|SCRIPT|STYLE)@/g, (_, name) => values[name]);
writeFileSync(process.argv[2], page);
