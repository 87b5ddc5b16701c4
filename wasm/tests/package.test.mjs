// The package as a whole: its files and sizes, and what bundlers and installers make of it.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import test from "node:test";
import { gzipSync } from "node:zlib";

import { Consumer } from "./consumer.mjs";
import { golden, moduleOf, packageFolder } from "./support.mjs";

const files = [
  "LICENSE", "README.md", "package.json",
  "tesk.mjs", "tesk.d.mts", "encoder.mjs", "encoder.d.mts", "thumbnail.mjs", "thumbnail.d.mts", "instance.mjs", "rgba.mjs",
  "tesk-decoder.wasm", "tesk-encoder.wasm", "viewer/index.html",
];
const gzipped = (name) => gzipSync(readFileSync(packageFolder + name), { level: 9 }).length;

test("npm packs these files and no others", () => {
  const words = ["--offline", "--no-update-notifier", "pack", "--dry-run", "--json"];
  const [{ files: packed, name, version }] = JSON.parse(execFileSync("npm", words, { cwd: packageFolder, stdio: "pipe" }));
  assert.deepEqual(packed.map(({ path }) => path).sort(), files.sort());
  assert.match(`${name} ${version}`, /^tesk \d+\.\d+\.\d+$/);
});

test("the decoder has less than 50 kB on its way, both directions less than 90 kB", () => {
  const scripts = ["tesk.mjs", "instance.mjs", "rgba.mjs"].map(gzipped).reduce((sum, size) => sum + size);
  assert.ok(gzipped("tesk-decoder.wasm") + scripts < 50e3, `${gzipped("tesk-decoder.wasm")} + ${scripts}`);
  assert.ok(gzipped("tesk-encoder.wasm") + scripts < 90e3, `${gzipped("tesk-encoder.wasm")} + ${scripts}`);
});

test("the sizes of README.md are right", () => {
  const page = readFileSync(`${packageFolder}README.md`, "utf8");
  const rows = [...page.matchAll(/^\| `([\w.-]+)` .*\| (\d+) kB \| (\d+) kB \|$/gm)];
  assert.deepEqual(rows.map(([, name]) => name), ["tesk-decoder.wasm", "tesk-encoder.wasm"]);
  for (const [, name, plain, zipped] of rows) {
    const sizes = [readFileSync(packageFolder + name).length, gzipped(name)];
    for (const [i, kilobytes] of [plain, zipped].entries())
      assert.ok(Math.abs(sizes[i] / 1000 - kilobytes) < 0.05 * kilobytes + 1, `${name}: ${sizes}`);
  }
});

test("the modules ask for nothing but to end, and to hear of memory", () => {
  for (const name of ["decoder", "encoder"]) {
    const imports = WebAssembly.Module.imports(moduleOf(name)).map(({ name }) => name);
    assert.deepEqual(imports.sort(), ["emscripten_notify_memory_growth", "proc_exit"]);
  }
});

const program = `
import { load } from "tesk";
import { loadEncoder } from "tesk/encoder";
import { fetchThumbnail } from "tesk/thumbnail";
export { fetchThumbnail };
export async function roundTrip(stream, sources = []) {
  const decoder = await load(sources[0]);
  decoder.push(stream);
  return (await loadEncoder(sources[1])).encode(decoder.decode());
}`;
const stream = golden("g8_photo_64x64.c.tk");

test("a project imports it by name", async () => {
  const consumer = new Consumer();
  consumer.write("program.mjs", program);
  const { roundTrip } = await import(`${consumer.folder}/program.mjs`);
  assert.deepEqual(await roundTrip(stream), stream);
  consumer.remove();
});

test("esbuild bundles it for browsers, without a word", async () => {
  const consumer = new Consumer();
  consumer.write("program.mjs", program);
  const options = ["--bundle", "--format=esm", "--minify", "--log-level=warning", "--outfile=bundle.mjs"];
  const words = consumer.run("esbuild", ...options, "program.mjs");
  assert.equal(words, "");
  const { roundTrip } = await import(`${consumer.folder}/bundle.mjs`);
  assert.deepEqual(await roundTrip(stream, [moduleOf("decoder"), moduleOf("encoder")]), stream);
  consumer.remove();
});

test("the modules are found beside a bundle, and say so when they are not", async () => {
  const consumer = new Consumer();
  consumer.write("program.mjs", program);
  consumer.run("esbuild", "--bundle", "--format=esm", "program.mjs", "--outfile=bundle.mjs");
  const { roundTrip } = await import(`${consumer.folder}/bundle.mjs`);
  await assert.rejects(roundTrip(stream), /tesk-decoder\.wasm/);
  for (const name of ["tesk-decoder.wasm", "tesk-encoder.wasm"]) consumer.write(name, readFileSync(packageFolder + name));
  assert.deepEqual(await roundTrip(stream), stream);
  consumer.remove();
});
