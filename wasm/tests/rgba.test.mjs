// Samples to the pixels of a canvas: all kinds, and windows.

import assert from "node:assert/strict";
import test from "node:test";

import { load, toRgba } from "../../build/wasm/package/tesk.mjs";
import { decoded, golden, status, teskError } from "./support.mjs";

/** Returns: a picture of one row. */
function row(bytesPerPixel, bitsPerSample, values) {
  const samples = bytesPerPixel === 2 ? Uint16Array.from(values) : Uint8Array.from(values);
  const width = values.length / (bytesPerPixel === 3 ? 3 : 1);
  return { width, height: 1, bytesPerPixel, bitsPerSample, reductions: 0, complete: true, samples };
}

/** Returns: the gray values of a picture; red, green and blue are the same, and opaque. */
function grays(picture, window) {
  const rgba = toRgba(picture, window);
  assert.equal(rgba.length, 4 * picture.width);
  return [...Array(picture.width).keys()].map((pixel) => {
    const [red, green, blue, alpha] = rgba.subarray(4 * pixel, 4 * pixel + 4);
    assert.deepEqual([red, green, alpha], [blue, blue, 255]);
    return red;
  });
}

test("8-bit gray is as it is", () => {
  const values = [...Array(256).keys()];
  assert.deepEqual(grays(row(1, 8, values)), values);
});

test("few bits fill the range", () => {
  assert.deepEqual(grays(row(1, 1, [0, 1])), [0, 255]);
  assert.deepEqual(grays(row(1, 4, [0, 1, 8, 15])), [0, 17, 136, 255]);
  assert.deepEqual(grays(row(2, 12, [0, 4095, 2048])), [0, 255, 128]);
  assert.deepEqual(grays(row(2, 16, [0, 257, 65535])), [0, 1, 255]);
});

test("samples beyond the declared bits are white", () => {
  assert.deepEqual(grays(row(2, 10, [1023, 1024, 65535])), [255, 255, 255]);
});

test("a header that declares more bits than a byte has, or none, does not make a picture black", () => {
  for (const bits of [9, 16, 24, 255]) assert.deepEqual(grays(row(1, bits, [0, 128, 255])), [0, 128, 255]);
  for (const bits of [17, 32, 255]) assert.deepEqual(grays(row(2, bits, [0, 257, 65535])), [0, 1, 255]);
  assert.deepEqual([...toRgba(row(3, 24, [255, 128, 0]))], [255, 128, 0, 255]);
  assert.deepEqual(grays(row(1, 0, [0, 1, 255])), [0, 255, 255]);
});

test("a window: black up to its lower end, white from its upper end on, even between", () => {
  const values = [0, 99, 100, 101, 150, 199, 200, 201, 65535];
  assert.deepEqual(grays(row(2, 16, values), [100, 200]), [0, 0, 0, 3, 128, 252, 255, 255, 255]);
  assert.deepEqual(grays(row(1, 8, [0, 127, 128, 255]), [127, 128]), [0, 0, 255, 255]);
  assert.deepEqual(grays(row(1, 8, [0, 128, 255]), [-255, 255]), [128, 192, 255]);
  assert.deepEqual(grays(row(1, 8, [0, 255]), [0, 510]), [0, 128]);
});

test("windows without width are a threshold: what is above the lower end is white", () => {
  for (const window of [[100, 100], [100, 50], [100, -1]])
    assert.deepEqual(grays(row(2, 16, [0, 99, 100, 101, 65535]), window), [0, 0, 0, 255, 255], `${window}`);
  assert.deepEqual(grays(row(1, 8, [10, 11]), [10.2, 10.6]), [0, 255]);
  assert.deepEqual(grays(row(1, 8, [10, 11]), [10.2, 10.3]), [0, 255]);
});

test("windows of no numbers give some picture", () => {
  for (const window of [[NaN, NaN], [0, NaN], [NaN, 1], [0, Infinity], [-Infinity, Infinity], [Infinity, 0]])
    grays(row(2, 16, [0, 1, 65535]), window);
});

test("colours keep their places, and have the window, too", () => {
  const picture = row(3, 8, [1, 2, 3, 253, 254, 255]);
  assert.deepEqual([...toRgba(picture)], [1, 2, 3, 255, 253, 254, 255, 255]);
  assert.deepEqual([...toRgba(picture, [1, 3])], [0, 128, 255, 255, 255, 255, 255, 255]);
});

test("pictures of streams have their pixels", async () => {
  const decoder = await load();
  const colours = golden("rgb_photo_33x65.raw");
  const rgba = toRgba(decoded(decoder, golden("rgb_photo_33x65.c.tk")));
  assert.equal(rgba.length, 4 * 33 * 65);
  assert.ok(rgba.every((value, i) => value === (i % 4 === 3 ? 255 : colours[3 * (i >> 2) + (i % 4)])));
  const deep = new Uint16Array(golden("g16_photo16_96x64.raw").slice().buffer);
  const grayscale = toRgba(decoded(decoder, golden("g16_photo16_96x64.c.tk")));
  assert.ok(deep.every((value, i) => grayscale[4 * i] === Math.round((value * 255) / 65535)));
});

test("samples that the decoder took away are an error, not a black picture", async () => {
  const decoder = await load();
  const picture = decoded(decoder, golden("rgb_photo_33x65.c.tk"));
  decoder.push(new Uint8Array(1 << 24));
  assert.equal(picture.samples.length, 0);
  assert.throws(() => toRgba(picture), teskError(status.invalidArgument));
});
