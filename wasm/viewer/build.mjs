// Makes the viewer page: `node build.mjs PACKAGE OUT`. One file holds scripts, styles and the module, so that it
// opens from a folder as well as from a server: OUT/index.html, with the demonstration beside it, and
// OUT/offline.html, with the demonstration in it.

import { execFileSync } from "node:child_process";
import { createHash } from "node:crypto";
import { copyFileSync, mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { argv } from "node:process";

const [, , packageFolder, out] = argv;
const here = import.meta.dirname ?? new URL(".", import.meta.url).pathname;
const own = (name) => readFileSync(join(here, name));

const bundle = (name) =>
  execFileSync("esbuild", [join(here, "src", name), "--bundle", "--minify", "--format=iife", "--target=es2022",
    "--charset=utf8", "--log-level=warning", "--define:import.meta.url=\"\""]).toString().trim();

const hash = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;

/** The page loads its own scripts and nothing else; files come from its own server. */
function policy(script, style) {
  return [
    "default-src 'none'", `script-src ${hash(script)} 'wasm-unsafe-eval'`, `style-src ${hash(style)}`,
    "worker-src blob:", "img-src blob: data:", "connect-src 'self' blob:", "base-uri 'none'", "form-action 'none'",
  ].join("; ");
}

const script = bundle("main.mjs");
const style = own("style.css").toString().trim();
const parts = {
  script,
  style,
  policy: policy(script, style),
  worker: bundle("worker.mjs"),
  module: readFileSync(join(packageFolder, "tesk-encoder.wasm")).toString("base64"),
};

function page(more) {
  const all = { ...parts, ...more };
  return own("index.html").toString().replace(/\{\{(\w+)\}\}/g, (_, name) => all[name]);
}

const demo = { demoStream: "demo/retina.tk", demoPng: "demo/retina.png" };
const inPage = Object.fromEntries(Object.entries(demo).map(([name, file]) => [name, own(file).toString("base64")]));

mkdirSync(out, { recursive: true });
writeFileSync(join(out, "index.html"), page({ demoStream: "", demoPng: "" }));
writeFileSync(join(out, "offline.html"), page(inPage));
for (const name of ["retina.tk", "retina.png"]) copyFileSync(join(here, "demo", name), join(out, name));
