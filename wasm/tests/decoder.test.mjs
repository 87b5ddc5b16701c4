// The life of a decoder: what it is loaded from, chunks out of its own memory, reset and close.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";

import { loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { load } from "../../build/wasm/package/tesk.mjs";
import {
  assertSameBytes, bytesOf, Chance, decoded, decoderWithLibrary, golden, moduleOf, packageFolder, status, teskError,
} from "./support.mjs";

const stream = golden("g8_photo_161x121.c.tk");
const raw = golden("g8_photo_161x121.raw");
const wasm = readFileSync(`${packageFolder}tesk-decoder.wasm`);

test("a decoder comes from bytes, responses and modules", async () => {
  const sources = [
    undefined, wasm, new Uint8Array(wasm), new Uint8Array(wasm).buffer, moduleOf("decoder"), new Response(wasm),
    Promise.resolve(new Response(wasm)), new Response(wasm, { headers: { "Content-Type": "application/wasm" } }),
  ];
  for (const source of sources) assertSameBytes(bytesOf(decoded(await load(source), stream)), raw);
  // The module of the encoder has all that a decoder needs.
  assertSameBytes(bytesOf(decoded(await load(moduleOf("encoder")), stream)), raw);
});

test("what is no module is an error", async () => {
  await assert.rejects(load(stream), WebAssembly.CompileError);
  await assert.rejects(load(new Response("<html>", { status: 404, statusText: "Not Found" })), /404 Not Found/);
  await assert.rejects(load(Promise.reject(new Error("no network"))), /no network/);
  await assert.rejects(loadEncoder(new Uint8Array(wasm.subarray(0, 1000))), WebAssembly.CompileError);
});

test("decoders do not touch each other", async () => {
  const module = moduleOf("decoder");
  const decoders = [await load(module), await load(module)];
  const [first, second] = decoders.map((decoder, i) => decoded(decoder, i === 0 ? stream : golden("rgb_photo_33x65.c.tk")));
  decoders[1].close();
  assertSameBytes(bytesOf(first), raw);
  assertSameBytes(bytesOf(second), golden("rgb_photo_33x65.raw"));
});

test("a chunk is copied", async () => {
  const decoder = await load();
  const chunk = stream.slice();
  decoder.push(chunk);
  chunk.fill(0);
  assertSameBytes(bytesOf(decoder.decode()), raw);
});

test("a chunk may be a view of the decoder's memory, also when that moves", async () => {
  const { decoder, library } = await decoderWithLibrary();
  const memory = () => Buffer.from(library.bytes(0, 1).buffer);
  decoder.push(stream);
  let pushes = 0;
  for (let moves = 0; moves < 3; ++pushes) {
    const { samples } = decoder.decode();
    const before = memory().buffer;
    decoder.push(samples);
    assert.equal(decoder.bytes, stream.length + (pushes + 1) * raw.length);
    if (memory().buffer !== before) ++moves;
  }
  let copies = 0;
  for (let at = memory().indexOf(raw); at >= 0; at = memory().indexOf(raw, at + 1)) ++copies;
  // The picture is one more.
  assert.ok(copies > pushes, `${copies} copies of ${pushes} chunks`);
});

test("stream gives back what has come, and may be pushed again", async () => {
  const decoder = await load();
  assert.equal(decoder.stream().length, 0);
  for (let pushes = 1; pushes <= 8; ++pushes) {
    decoder.push(pushes === 1 ? stream : decoder.stream());
    const copies = Buffer.concat(Array(2 ** (pushes - 1)).fill(stream));
    assertSameBytes(decoder.stream(), copies, `${pushes} pushes`);
  }
  decoder.reset();
  assert.equal(decoder.stream().length, 0);
});

test("reset forgets the stream", async () => {
  const decoder = await load();
  decoded(decoder, stream);
  decoder.reset();
  assert.equal(decoder.bytes, 0);
  assert.equal(decoder.probe(), null);
  assert.throws(() => decoder.decode(), teskError(status.invalidStream));
  decoder.reset();
  assertSameBytes(bytesOf(decoded(decoder, stream)), raw);
});

test("an empty chunk is nothing", async () => {
  const decoder = await load();
  decoder.push(new Uint8Array());
  assert.equal(decoder.bytes, 0);
  decoder.push(stream);
  decoder.push(new Uint8Array());
  assert.equal(decoder.decode().complete, true);
});

test("close: every other call throws then", async () => {
  const decoder = await load();
  decoder.push(stream);
  decoder.close();
  assert.equal(decoder.bytes, 0);
  const calls = [
    () => decoder.push(stream), () => decoder.push(new Uint8Array()), () => decoder.reset(),
    () => decoder.probe(), () => decoder.measure(), () => decoder.stream(), () => decoder.decode(),
  ];
  for (const call of calls) assert.throws(call, teskError(status.invalidArgument), `${call}`);
  decoder.close();
});

test("pictures stay until the next decode, push or reset", async () => {
  const decoder = await load();
  const picture = decoded(decoder, stream);
  decoder.probe();
  decoder.measure();
  assertSameBytes(bytesOf(picture), raw);
});

test("two decoders of one thread take turns", async () => {
  const chance = new Chance(5);
  const module = moduleOf("decoder");
  const pairs = [];
  for (const image of ["g8_photo_161x121", "rgb_photo_33x65", "g16_photo16_96x64"])
    pairs.push({ decoder: await load(module), stream: golden(`${image}.c.tk`), raw: golden(`${image}.raw`) });
  while (pairs.some(({ decoder, stream }) => decoder.bytes < stream.length)) {
    const { decoder, stream } = pairs[chance.below(pairs.length)];
    decoder.push(stream.subarray(decoder.bytes, decoder.bytes + chance.below(3000)));
    if (decoder.bytes >= 16) decoder.decode();
  }
  for (const { decoder, raw } of pairs) assertSameBytes(bytesOf(decoder.decode()), raw);
});
