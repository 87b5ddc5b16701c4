// Runs a program that emscripten made: `node run.mjs PROGRAM.wasm ARGUMENT ...`.
import { readFile } from "node:fs/promises";
import { argv, exit } from "node:process";
import { WASI } from "node:wasi";

const wasi = new WASI({ version: "preview1", args: argv.slice(2), returnOnExit: true });
const module = await WebAssembly.compile(await readFile(argv[2]));
const instance = await WebAssembly.instantiate(module, { wasi_snapshot_preview1: wasi.wasiImport });
exit(wasi.start(instance));
