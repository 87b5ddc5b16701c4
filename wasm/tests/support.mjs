// What the tests of the package share: its files, golden streams, numbers by chance, expectations.

import assert from "node:assert/strict";
import { existsSync, readFileSync } from "node:fs";
import { fileURLToPath } from "node:url";

import { Library } from "../../build/wasm/package/instance.mjs";
import { Decoder, TeskError } from "../../build/wasm/package/tesk.mjs";

/** The package as it was built. */
export const packageFolder = fileURLToPath(new URL("../../build/wasm/package/", import.meta.url));
/** The sources. */
export const sourceFolder = fileURLToPath(new URL("../../", import.meta.url));

export const status = { invalidStream: 3, unsupportedFormat: 4, limitExceeded: 5, outOfMemory: 6, invalidArgument: 8 };

const goldenUrl = (name) => new URL(`../../tests/golden/${name}`, import.meta.url);
export const golden = (name) => new Uint8Array(readFileSync(goldenUrl(name)));
export const hasGolden = (name) => existsSync(goldenUrl(name));

/**
 * Returns: what tests/golden/MANIFEST.tsv says of the mode `d`, the tool's decompression of files: stream,
 * compress arguments, whether it has a picture, the hash of that, whether it is the image.
 */
export function goldenStreams() {
  const rows = new TextDecoder().decode(golden("MANIFEST.tsv")).trim().split("\n").slice(1);
  let above = [];
  const streams = [];
  for (const row of rows) {
    above = row.split("\t").map((field, column) => (field === '"' ? above[column] : field));
    const [stream, command, , mode, exit, , hash, against] = above;
    if (mode === "d")
      streams.push({ stream, command: command.split(" "), decodes: exit === "0", hash, exact: against === "exact" });
  }
  return streams;
}

/** A module of the package, compiled once for each test file. */
export const moduleOf = (name) => new WebAssembly.Module(readFileSync(`${packageFolder}tesk-${name}.wasm`));

/** Returns: a decoder, and the instance below it, for tests that take its memory away. */
export async function decoderWithLibrary(module = moduleOf("decoder")) {
  const library = await Library.of(module);
  return { library, decoder: new Decoder(library) };
}

export function decoded(decoder, stream, options) {
  decoder.reset();
  decoder.push(stream);
  return decoder.decode(options);
}

/** Returns: a copy of the samples, as bytes. */
export function bytesOf({ samples }) {
  return new Uint8Array(samples.buffer, samples.byteOffset, samples.byteLength).slice();
}

/** assert.deepEqual takes seconds for large arrays. */
export function assertSameBytes(actual, expected, message = "") {
  assert.ok(Buffer.compare(actual, expected) === 0, `${message}: ${actual.length} bytes are not the ${expected.length} expected`);
}

/** Of assert.throws: a TeskError with one of these statuses. */
export const teskError =
  (...statuses) =>
  (error) => {
    assert.ok(error instanceof TeskError, `${error} is no TeskError`);
    assert.ok(statuses.includes(error.status), `${error} has the status ${error.status}`);
    return true;
  };

/** The same numbers in each run: mulberry32. `below(n)` is a whole number from 0 to n - 1. */
export class Chance {
  #state;
  constructor(seed) {
    this.#state = seed;
  }
  below(count) {
    this.#state = (this.#state + 0x6d2b79f5) | 0;
    let mixed = Math.imul(this.#state ^ (this.#state >>> 15), 1 | this.#state);
    mixed ^= mixed + Math.imul(mixed ^ (mixed >>> 7), 61 | mixed);
    return Math.floor((((mixed ^ (mixed >>> 14)) >>> 0) / 2 ** 32) * count);
  }
  bytes(count) {
    return Uint8Array.from({ length: count }, () => this.below(256));
  }
}

/** Returns: a stream of a header alone: docs/format.md, 2. */
export function header(width, height, bytesPerPixel = 1, bitsPerSample = 8) {
  const bytes = new Uint8Array(16);
  bytes.set(new TextEncoder().encode("TK30"));
  bytes.set([bytesPerPixel, bitsPerSample, width & 255, width >> 8, height & 255, height >> 8], 4);
  return bytes;
}

/** Returns: what a picture must be like, whatever its stream. */
export function assertShape(picture) {
  const { width, height, bytesPerPixel, samples, complete } = picture;
  assert.equal(samples.length, width * height * (bytesPerPixel === 3 ? 3 : 1));
  assert.equal(samples.constructor, bytesPerPixel === 2 ? Uint16Array : Uint8Array);
  assert.equal(typeof complete, "boolean");
}
