// Small pictures of files on a server: good servers and others, and what is fetched from them.

import assert from "node:assert/strict";
import test, { after } from "node:test";

import { loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { load } from "../../build/wasm/package/tesk.mjs";
import { fetchThumbnail } from "../../build/wasm/package/thumbnail.mjs";
import { assertSameBytes, assertShape, bytesOf, Chance, decoded, golden, header, status, teskError } from "./support.mjs";
import { FileServer } from "./server.mjs";

const firstBytes = 4096;
const photo = golden("g8_photo_261x1026.c.tk");
const small = golden("g8_photo_64x64.c.tk");
const chance = new Chance(7);

/** An image whose stream is long, so that a server is not done when the client has enough. */
async function longStream() {
  const width = 4000, height = 3000;
  const samples = new Uint8Array(width * height);
  for (let i = 0; i < samples.length; i += 4096) samples.set(chance.bytes(16), i);
  for (let i = 1; i < samples.length; ++i) samples[i] = (samples[i] + 31 * samples[i - 1] + 7) & 255;
  return (await loadEncoder()).encode({ width, height, bytesPerPixel: 1, samples }, { verify: false });
}

const long = await longStream();
const files = {
  "photo.tk": { bytes: photo },
  "small.tk": { bytes: small },
  "unknown-total.tk": { bytes: photo, total: false },
  "unknown-small.tk": { bytes: small, total: false },
  "no-content-range.tk": { bytes: photo, noContentRange: true },
  "whole.tk": { bytes: photo, ranges: false },
  "whole-small.tk": { bytes: small, ranges: false },
  "whole-no-length.tk": { bytes: photo, ranges: false, length: false },
  "other-range.tk": { bytes: photo, shift: 1 },
  "short-answers.tk": { bytes: photo, most: 1000 },
  "long.tk": { bytes: long },
  "long-whole.tk": { bytes: long, ranges: false },
  "junk.tk": { bytes: chance.bytes(10000) },
  "junk-whole.tk": { bytes: chance.bytes(20000000), ranges: false },
  "empty.tk": { bytes: new Uint8Array() },
  "header.tk": { bytes: header(1000, 700) },
  "half-a-header.tk": { bytes: small.subarray(0, 9) },
  "colours.tk": { bytes: golden("rgb_photo_101x77.cc.tk") },
  "deep.tk": { bytes: golden("g16_photo16_242x271.c.tk") },
  "forbidden.tk": { status: 403 },
  "broken.tk": { status: 500 },
};
const server = await FileServer.of(files);
after(() => server.close());
const decoder = await load();

/** Returns: the thumbnail, what was asked for and sent; the thumbnail is as from these bytes. */
async function fetched(path, options) {
  server.requests = [];
  server.sentBytes = 0;
  const thumbnail = await fetchThumbnail(decoder, server.url(path), options);
  const { picture, reduce, bytes } = thumbnail;
  assertShape(picture);
  assert.equal(bytes, decoder.bytes);
  assert.equal(thumbnail.requests, server.requests.length);
  const samples = bytesOf(picture);
  assertSameBytes(samples, bytesOf(decoded(decoder, files[path].bytes.subarray(0, bytes), { reduce })), path);
  return { ...thumbnail, ranges: server.requests.map(({ range }) => range), sentBytes: server.sentBytes };
}

test("two ranges of a large file", async () => {
  const { picture, reduce, bytes, fileBytes, ranges, sentBytes } = await fetched("photo.tk", { side: 600, bitsPerSample: 4 });
  assert.equal(reduce, 1);
  assert.deepEqual([picture.width, picture.height], [131, 513]);
  const needed = Math.ceil((131 * 513 * 4) / 8);
  assert.deepEqual(ranges, [`bytes=0-${firstBytes - 1}`, `bytes=${firstBytes}-${needed - 1}`]);
  assert.deepEqual([bytes, sentBytes, fileBytes], [needed, needed, photo.length]);
});

test("one range where the first bytes are enough", async () => {
  const { reduce, bytes, ranges, fileBytes } = await fetched("photo.tk");
  assert.equal(reduce, 3);
  assert.deepEqual(ranges, [`bytes=0-${firstBytes - 1}`]);
  assert.deepEqual([bytes, fileBytes], [firstBytes, photo.length]);
});

test("the longer side decides, and there are only so many reductions", async () => {
  for (const [side, reduce] of [[5000, 0], [1026, 0], [1025, 1], [513, 1], [512, 2], [33, 5], [32, 5], [1, 5], [0, 5]])
    assert.equal((await fetched("photo.tk", { side })).reduce, reduce, `${side}`);
  assert.equal((await fetched("header.tk", { side: 1 })).reduce, 5);
});

test("colours count three times, 16 bits once", async () => {
  const colours = await fetched("colours.tk", { side: 101, bitsPerSample: 2 });
  assert.equal(colours.bytes, Math.max(firstBytes, Math.ceil((3 * 101 * 77 * 2) / 8)));
  const deep = await fetched("deep.tk", { side: 300, bitsPerSample: 2 });
  assert.equal(deep.bytes, Math.ceil((242 * 271 * 2) / 8));
});

test("more bits than a file has are all of it", async () => {
  for (const bitsPerSample of [100, Infinity])
    for (const path of ["photo.tk", "unknown-total.tk", "whole.tk", "whole-no-length.tk"]) {
      const { picture, bytes } = await fetched(path, { side: 2000, bitsPerSample });
      assert.equal(picture.complete, true, path);
      assert.equal(bytes, photo.length);
    }
});

test("a file that is shorter than the first range", async () => {
  const facts = ({ bytes, fileBytes, ranges, picture }) => [bytes, fileBytes, ranges.length, picture.complete];
  const known = await fetched("small.tk", { side: 64, bitsPerSample: 100 });
  assert.deepEqual(facts(known), [small.length, small.length, 1, true]);
  // Without the length of the file only the server knows that there is no more: 416.
  const unknown = await fetched("unknown-small.tk", { side: 64, bitsPerSample: 100 });
  assert.deepEqual(facts(unknown), [small.length, null, 2, true]);
  const whole = await fetched("whole-small.tk", { side: 64, bitsPerSample: 100 });
  assert.deepEqual(facts(whole), [small.length, small.length, 1, true]);
});

test("a server that does not say how long the file is", async () => {
  for (const path of ["unknown-total.tk", "no-content-range.tk", "whole-no-length.tk"])
    assert.equal((await fetched(path, { side: 600 })).fileBytes, null, path);
});

test("a server that sends less than was asked for", async () => {
  const { bytes, ranges } = await fetched("short-answers.tk", { side: 600 });
  assert.equal(ranges.length, 2);
  assert.equal(bytes, 2000);
});

test("a server that sends another part than was asked for", async () => {
  await assert.rejects(fetchThumbnail(decoder, server.url("other-range.tk")), /bytes 1-4096\/138911 instead of bytes 0-4095/);
});

test("a server without ranges is stopped when enough has come", async () => {
  assert.ok(long.length > 8e6, `${long.length}`);
  const { bytes, fileBytes, ranges, sentBytes } = await fetched("long-whole.tk");
  const needed = Math.ceil((250 * 188 * 2) / 8);
  assert.deepEqual([bytes, fileBytes, ranges.length], [needed, long.length, 1]);
  await closed(1);
  // What is on its way, in the buffers of both systems, counts as sent.
  assert.ok(server.sentBytes < long.length / 2 && sentBytes >= needed, `${server.sentBytes} bytes`);
});

test("what has been asked for is the same with ranges and without", async () => {
  const options = { side: 600, bitsPerSample: 3 };
  const samples = [];
  for (const path of ["photo.tk", "whole.tk", "unknown-total.tk", "no-content-range.tk", "whole-no-length.tk"])
    samples.push(bytesOf((await fetchThumbnail(decoder, server.url(path), options)).picture));
  for (const other of samples) assertSameBytes(other, samples[0]);
});

/** Waits until a number of answers were given up by the client. */
async function closed(count) {
  for (let tries = 0; server.aborted < count && tries < 100; ++tries) await new Promise((later) => setTimeout(later, 20));
  assert.equal(server.aborted, count, "connections that were given up");
}

test("answers that are no stream are errors", async () => {
  const errorOf = (path) => fetchThumbnail(decoder, server.url(path));
  await assert.rejects(errorOf("nothing.tk"), /nothing\.tk: 404 Not Found/);
  await assert.rejects(errorOf("forbidden.tk"), /403/);
  await assert.rejects(errorOf("broken.tk"), /500/);
  for (const path of ["junk.tk", "empty.tk", "half-a-header.tk"])
    await assert.rejects(errorOf(path), teskError(status.invalidStream), path);
  await assert.rejects(fetchThumbnail(decoder, "http://127.0.0.1:1/photo.tk"), TypeError);
  assert.ok((await fetched("photo.tk")).picture);
});

test("a long answer that is no stream is not waited for", async () => {
  server.aborted = 0;
  await assert.rejects(fetchThumbnail(decoder, server.url("junk-whole.tk")), teskError(status.invalidStream));
  await closed(1);
});

test("a header alone is a gray picture", async () => {
  const { picture, bytes } = await fetched("header.tk");
  assert.deepEqual([picture.width, picture.height, picture.complete, bytes], [250, 175, false, 16]);
});

test("a thumbnail can be given up", async () => {
  await assert.rejects(fetchThumbnail(decoder, server.url("photo.tk"), { signal: AbortSignal.abort() }), { name: "AbortError" });
});

test("a URL may be an object", async () => {
  assert.ok((await fetchThumbnail(decoder, new URL(server.url("photo.tk")))).picture);
});

test("a decoder keeps the beginning of the file", async () => {
  const { bytes } = await fetchThumbnail(decoder, server.url("photo.tk"), { side: 600 });
  assert.equal(decoder.bytes, bytes);
  decoder.push(photo.subarray(bytes));
  assertSameBytes(bytesOf(decoder.decode()), golden("g8_photo_261x1026.raw"));
});
