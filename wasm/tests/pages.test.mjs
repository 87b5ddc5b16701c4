// The pages: every block of README.md of the package and of docs/browser.md is run, in a page that is a stand-in.

import assert from "node:assert/strict";
import { readFileSync, symlinkSync } from "node:fs";
import test, { after } from "node:test";
import { pathToFileURL } from "node:url";

import { loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { load, toRgba } from "../../build/wasm/package/tesk.mjs";
import { Consumer } from "./consumer.mjs";
import { decoded, golden, packageFolder, sourceFolder } from "./support.mjs";
import { FileServer } from "./server.mjs";

/** Returns: a stream of more samples than a call can have arguments: what a page does with all of them must bear that. */
async function largeScan() {
  const [width, height] = [1000, 1000];
  const samples = Uint16Array.from({ length: width * height }, (_, i) => (i % width) * 3 + Math.trunc(i / width) * 17);
  return (await loadEncoder()).encode({ width, height, bytesPerPixel: 2, samples });
}

/** The files that the pages name. */
const server = await FileServer.of({
  "photo.tk": { bytes: golden("rgb_photo_257x256.c.tk"), pause: 5 },
  "tesk/tesk-decoder.wasm": { bytes: readFileSync(`${packageFolder}tesk-decoder.wasm`), type: "application/wasm" },
});
const consumer = new Consumer();
consumer.write("scan.tk", await largeScan());
symlinkSync(`${sourceFolder}build`, `${consumer.folder}/build`);
after(() => {
  consumer.remove();
  return server.close();
});

/** Yields: kind and text of each block of a page, and the text above it. */
function* blocksOf(path) {
  const page = readFileSync(sourceFolder + path, "utf8");
  let end = 0;
  for (const block of page.matchAll(/^```(\w*)\n(.*?)^```$/gms)) {
    yield { kind: block[1], text: block[2], above: page.slice(end, block.index) };
    end = block.index + block[0].length;
  }
}

/** What was put on the canvas. */
const painted = [];
const canvas = {
  getContext: () => ({
    putImageData: (image) => painted.push(image),
    getImageData: (x, y, width, height) =>
      new ImageDataOfPage(new Uint8ClampedArray(4 * width * height).map((_, i) => (i >> 4) & 255), width, height),
  }),
};

/** A worker in the same thread: one at a time. */
class StandInWorker {
  constructor(url) {
    globalThis.self = {};
    globalThis.postMessage = (data) => this.onmessage({ data });
    this.loaded = import(url).then(() => (this.receive = globalThis.self.onmessage));
  }
  async postMessage(data) {
    // A worker completes addresses by that of its script, which is in another folder: a page sends whole ones.
    assert.ok(new URL(data).href === data, data);
    await this.loaded;
    StandInWorker.done = this.receive({ data });
  }
}

class ImageDataOfPage {
  constructor(data, width, height = data.length / 4 / width) {
    assert.ok(data instanceof Uint8ClampedArray && data.length === 4 * width * height);
    Object.assign(this, { data, width, height });
  }
}

const fetchOfNode = fetch;
const printed = [];
Object.assign(globalThis, {
  document: { querySelector: () => canvas, baseURI: server.url("") },
  Worker: StandInWorker,
  ImageData: ImageDataOfPage,
  fetch: (address, options) => fetchOfNode(new URL(address, server.url("")), options),
});

let scripts = 0;

/** Runs a block as a module of its own, or under the name that stands above it. Each console.log prints what its comment says. */
async function runScript(text, above) {
  const name = /`(\w+\.mjs)`:\s*$/.exec(above)?.[1] ?? `script${++scripts}.mjs`;
  consumer.write(name, text);
  if (name === "worker.mjs") return;
  printed.length = 0;
  const log = console.log;
  console.log = (...words) => printed.push(words.join(" "));
  try {
    process.chdir(consumer.folder);
    await import(pathToFileURL(`${consumer.folder}/${name}`));
    for (let tries = 0; text.includes("new Worker") && StandInWorker.done === undefined && tries < 100; ++tries)
      await new Promise((later) => setTimeout(later, 20));
    await StandInWorker.done;
  } finally {
    console.log = log;
  }
  const shown = [...text.matchAll(/^\s*console\.log\(.*\);(?:\s*\/\/ (.*))?$/gm)].map(([, comment]) => comment);
  for (const [i, comment] of shown.entries()) if (comment && !comment.startsWith("{")) assert.equal(printed[i], comment);
}

/** Runs the scripts of a page, whose names have to lead to files of the package. */
async function runHtml(text) {
  const [, map] = /<script type="importmap">(.*?)<\/script>/s.exec(text);
  for (const [name, path] of Object.entries(JSON.parse(map).imports)) {
    const { exports } = JSON.parse(readFileSync(`${packageFolder}package.json`, "utf8"));
    assert.equal(path, exports[name.replace("tesk", ".")].default.replace("./", "/tesk/"));
  }
  const [, script] = /<script type="module">(.*?)<\/script>/s.exec(text);
  await runScript(script, "");
}

/** Runs npm without a network. Returns: what it prints. */
const npm = (project, ...words) => project.run("npm", "--offline", "--no-update-notifier", "--no-audit", "--no-fund", ...words);

/** Installs the file that npm packs, and uses what was installed. */
function install(words) {
  npm(consumer, "pack", "./build/wasm/package");
  const project = new Consumer({ empty: true });
  // The page has the sources beside the project.
  npm(project, ...words.map((word) => word.replace("../tesk", consumer.folder)));
  project.write("program.mjs", `import { loadEncoder } from "tesk/encoder"; console.log(typeof (await loadEncoder()).encode);`);
  assert.equal(project.run("node", "program.mjs"), "function\n");
  project.remove();
}

/** What builds is run by the check, which runs this test. */
function runLine(line) {
  const [command, ...words] = line.replace(/\s+#.*/, "").split(" ");
  const check = readFileSync(`${sourceFolder}tools/check`, "utf8");
  if (command === "npm" && words[0] === "install") install(words);
  else if (command === "npm") npm(consumer, ...words);
  else assert.ok(check.includes([command, ...words].join(" ")), `nobody runs '${line}'`);
}

for (const [path, kinds] of [["wasm/package/README.md", ["js", "sh"]], ["docs/browser.md", ["html", "js", "sh"]]])
  test(`the blocks of ${path} do what they say`, async () => {
    const seen = new Set();
    for (const { kind, text, above } of blocksOf(path)) {
      seen.add(kind);
      if (kind === "js") await runScript(text, above);
      else if (kind === "html") await runHtml(text);
      else for (const line of text.trim().split("\n")) runLine(line);
    }
    assert.deepEqual([...seen].sort(), kinds);
  });

test("the pages painted the photograph, again and again while it arrived, and at its end", async () => {
  const expected = Buffer.from(toRgba(decoded(await load(), golden("rgb_photo_257x256.c.tk"))));
  const pictures = painted.filter(({ width, height }) => width === 257 && height === 256).map(({ data }) => Buffer.from(data));
  const complete = pictures.filter((data) => data.equals(expected)).length;
  assert.ok(complete >= 2, `${complete} of ${pictures.length} pictures: of the arrival, and of the worker`);
  assert.ok(pictures.length - complete >= 3, `${pictures.length} pictures, ${complete} complete`);
  assert.ok(!pictures[0].equals(pictures[1]));
});
