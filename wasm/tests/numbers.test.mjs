// Numbers that are none: an error or a picture, never a trap, and never something else than was asked for.

import assert from "node:assert/strict";
import test from "node:test";

import { loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { load } from "../../build/wasm/package/tesk.mjs";
import { assertSameBytes, assertShape, bytesOf, decoded, golden, status, teskError } from "./support.mjs";

const decoder = await load();
const encoder = await loadEncoder();
const stream = golden("g8_photo_64x64.c.tk");
const raw = golden("g8_photo_64x64.raw");
const image = { width: 64, height: 64, bytesPerPixel: 1, bitsPerSample: 8, samples: raw };
const odd = [
  NaN, -1, -0.5, 0.5, 1.5, 2 ** 31, 2 ** 32, 2 ** 33, 2 ** 32 + 1, 2 ** 53, -(2 ** 33), Infinity, -Infinity, null, "1", {},
];
decoder.push(stream);

test("`prefix`: as many bytes as there are", () => {
  for (const prefix of [2 ** 31, 2 ** 32, 2 ** 33, 2 ** 32 + 1, Infinity, 2541])
    assertSameBytes(bytesOf(decoder.decode({ prefix })), raw, `${prefix}`);
  assertSameBytes(bytesOf(decoder.decode({ prefix: undefined })), raw);
  for (const prefix of [NaN, -1, 0, 1.5, 15, -(2 ** 33), -Infinity, null, "junk"])
    assert.throws(() => decoder.decode({ prefix }), teskError(status.invalidStream), `${prefix}`);
  assertSameBytes(bytesOf(decoder.decode({ prefix: 100.9 })), bytesOf(decoder.decode({ prefix: 100 })));
});

test("`reduce`: a whole number of reductions that there are", () => {
  for (const reduce of [...odd, 6, 2 ** 32 + 2])
    assert.throws(() => decoder.decode({ reduce }), teskError(status.unsupportedFormat), `${reduce}`);
  assertSameBytes(bytesOf(decoder.decode({ reduce: undefined })), raw);
});

test("`maxPixels`: what no number of pixels is below refuses all", () => {
  for (const maxPixels of [NaN, -1, 0.5, 4095.9, -Infinity, null, {}])
    assert.throws(() => decoder.decode({ maxPixels }), teskError(status.limitExceeded), `${maxPixels}`);
  for (const maxPixels of [4096, 2 ** 32, 2 ** 33, Infinity, undefined]) assertShape(decoder.decode({ maxPixels }));
});

test("`budget`: 0, or 16 and more", () => {
  for (const budget of [NaN, -1, -0.5, 0.5, 1.5, 15, 15.9, -(2 ** 33), -Infinity, null, "junk", {}])
    assert.throws(() => encoder.encode(image, { budget }), teskError(status.invalidArgument), `${budget}`);
  for (const budget of [0, undefined, 2540, 2 ** 31, 2 ** 32, 2 ** 32 + 16, 2 ** 33, Infinity])
    assertSameBytes(encoder.encode(image, { budget }), stream, `${budget}`);
  for (const budget of [16, 100, 100.9]) assert.equal(encoder.encode(image, { budget }).length, Math.trunc(budget));
});

/** The encoder refuses the image, with these numbers in place of its own. */
function refuses(numbers) {
  const call = () => encoder.encode({ ...image, ...numbers });
  assert.throws(call, teskError(status.invalidArgument, status.unsupportedFormat), JSON.stringify(numbers));
}

test("sizes: whole numbers, and samples that fit", () => {
  for (const name of ["width", "height", "bytesPerPixel"])
    for (const value of [...odd, 0, 63, undefined]) refuses({ [name]: value });
  // Products that fit are no excuse.
  for (const [width, height] of [[1.5, 2], [2, 1.5], [-2, -2], [0.5, 6], [2 ** 40, 2 ** -38]])
    refuses({ width, height, samples: new Uint8Array(width * height) });
  for (const bitsPerSample of [NaN, -1, 0, 0.5, 7.5, 9, 2 ** 32 + 8, Infinity, "junk"]) refuses({ bitsPerSample });
  assertSameBytes(encoder.encode({ ...image, bitsPerSample: undefined }), stream);
});

test("samples: as many bytes as the image has", () => {
  for (const samples of [raw.subarray(1), new Uint8Array(4097), new Uint16Array(4096), new Uint8Array()])
    assert.throws(() => encoder.encode({ ...image, samples }), teskError(status.invalidArgument));
  for (const samples of [undefined, null, 5, "words", [...raw], raw.buffer, new DataView(raw.buffer)])
    assert.throws(() => encoder.encode({ ...image, samples }), teskError(status.invalidArgument));
  for (const samples of [raw, new Uint8ClampedArray(raw), Buffer.from(raw), new Uint8Array([0, ...raw]).subarray(1)])
    assertSameBytes(encoder.encode({ ...image, samples }), stream);
});

test("chunks are bytes", () => {
  const { buffer } = stream;
  const other = [undefined, null, 5, "words", [1, 2], buffer, new DataView(buffer), new Uint16Array(8), new Float64Array(2)];
  for (const chunk of other) assert.throws(() => decoder.push(chunk), teskError(status.invalidArgument), `${chunk}`);
  assert.equal(decoder.bytes, stream.length);
  for (const chunk of [stream, new Uint8ClampedArray(stream), Buffer.from(stream)])
    assertSameBytes(bytesOf(decoded(decoder, chunk)), raw);
});
