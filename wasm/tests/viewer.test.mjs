// The parts of the viewer that need no page.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";

import { load } from "../../build/wasm/package/tesk.mjs";
import { loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { bytesAt, positionOf, steps, ticksOf } from "../viewer/src/bytescale.mjs";
import { imageOfCanvas, imageOfRaw } from "../viewer/src/converting.mjs";
import * as figures from "../viewer/src/figures.mjs";
import { Pictures } from "../viewer/src/pictures.mjs";
import { squarest } from "../viewer/src/rawdialog.mjs";
import { View } from "../viewer/src/view.mjs";

const golden = (name) => new Uint8Array(readFileSync(new URL(`../../tests/golden/${name}`, import.meta.url)));
const all = (width, height) => ({ region: { x: 0, y: 0, width, height }, reduction: 0 });

async function picturesOf(stream) {
  const pictures = new Pictures(await load());
  pictures.push(stream);
  return pictures;
}

test("a part of a picture is the same part of the whole one", async () => {
  const pictures = await picturesOf(golden("rgb_photo_33x65.c.tk"));
  const { bytes } = pictures.end();
  const whole = pictures.paint({ bytes, ...all(33, 65) });
  const region = { x: 7, y: 11, width: 20, height: 30 };
  const { rgba, part } = pictures.paint({ bytes, region, reduction: 0 });
  assert.deepEqual(part, region);
  for (let row = 0; row < 30; ++row) {
    const begin = 4 * (33 * (11 + row) + 7);
    assert.deepEqual(rgba.subarray(80 * row, 80 * (row + 1)), whole.rgba.subarray(begin, begin + 80));
  }
});

test("a part of a reduced picture stands at whole pixels of it", async () => {
  const pictures = await picturesOf(golden("g8_photo_161x121.c.tk"));
  const { bytes } = pictures.end();
  const region = { x: 50, y: 33, width: 100, height: 88 };
  const { reduce, size, part } = pictures.paint({ bytes, region, reduction: 2 });
  assert.equal(reduce, 2);
  assert.deepEqual(size, { width: 41, height: 31 });
  assert.deepEqual(part, { x: 48, y: 32, width: 26, height: 23 });
});

test("few bytes are painted small", async () => {
  const stream = golden("g8_photo_261x1026.c.tk");
  const pictures = await picturesOf(stream);
  const { bytes } = pictures.end();
  const reductions = [100, 600, 3000, 10000, bytes].map((few) => pictures.paint({ bytes: few, ...all(261, 1026) }).reduce);
  assert.deepEqual(reductions, [4, 3, 2, 1, 0]);
});

test("pictures that were painted before more came are not read again", async () => {
  // The memory of the instance grows with the stream, and moves.
  const width = 2000;
  const samples = Uint8Array.from({ length: width * width }, (_, i) => (i * 2654435761) >>> 24);
  const stream = (await loadEncoder()).encode({ width, height: width, bytesPerPixel: 1, samples }, { verify: false });
  const pictures = new Pictures(await load());
  const paint = () => pictures.paint({ bytes: 400_000, ...all(width, width) });
  let before = null;
  for (let begin = 0; begin < stream.length; begin += 400_000) {
    pictures.push(stream.subarray(begin, begin + 400_000));
    const { rgba } = paint();
    if (before !== null) assert.ok(Buffer.from(rgba.buffer).equals(Buffer.from(before.buffer)));
    before = rgba;
  }
});

test("the histogram counts samples, and leaves half of a hundredth outside of its window", async () => {
  const samples = Uint16Array.from({ length: 100 * 100 }, (_, i) => (i < 40 ? 0 : i < 9960 ? 1000 + (i % 100) : 4095));
  const stream = (await loadEncoder()).encode({ width: 100, height: 100, bytesPerPixel: 2, samples });
  const pictures = await picturesOf(stream);
  const { bytes } = pictures.end();
  const { histogram } = pictures.paint({ bytes, ...all(100, 100) });
  assert.equal(histogram.bins.length, 512);
  assert.deepEqual([histogram.bins[0], histogram.bins[511]], [40, 40]);
  assert.deepEqual(histogram.window, [1000, 1099]);
});

test("decibels are those of all samples", async () => {
  const stream = golden("g8_photo_161x121.c.tk");
  const raw = golden("g8_photo_161x121.raw");
  const pictures = await picturesOf(stream);
  const { bytes } = pictures.end();
  const decoder = await load();
  decoder.push(stream);
  const { samples } = decoder.decode({ prefix: 2000 });
  const sum = raw.reduce((total, sample, i) => total + (sample - samples[i]) ** 2, 0);
  assert.equal(pictures.distance(2000), 10 * Math.log10((255 ** 2 * raw.length) / sum));
  assert.equal(pictures.distance(bytes), Infinity);
});

test("what stands behind a stream is not part of it", async () => {
  const stream = golden("g8_photo_161x121.c.tk");
  const pictures = await picturesOf(new Uint8Array([...stream, 1, 2, 3]));
  assert.deepEqual(pictures.end(), { bytes: stream.length, complete: true });
  assert.deepEqual(pictures.stream(), stream);
});

test("gray pixels of a canvas become a gray image, others one of three colours", () => {
  const gray = imageOfCanvas({ width: 2, height: 1, rgba: [7, 7, 7, 255, 9, 9, 9, 255] });
  assert.deepEqual(gray.image, { width: 2, height: 1, bytesPerPixel: 1, samples: new Uint8Array([7, 9]) });
  assert.equal(gray.isOpaque, true);
  const colour = imageOfCanvas({ width: 1, height: 1, rgba: [7, 8, 7, 254] });
  assert.deepEqual(colour.image, { width: 1, height: 1, bytesPerPixel: 3, samples: new Uint8Array([7, 8, 7]) });
  assert.equal(colour.isOpaque, false);
});

test("big-endian samples are turned, and the file stays as it is", () => {
  const bytes = new Uint8Array([99, 1, 2, 3, 4]);
  const { samples } = imageOfRaw({ bytes, width: 2, height: 1, kind: "gray16be", skip: 1 });
  assert.deepEqual(samples, new Uint8Array([2, 1, 4, 3]));
  assert.deepEqual(bytes, new Uint8Array([99, 1, 2, 3, 4]));
});

test("the squarest image is the first guess", () => {
  assert.deepEqual(squarest(64 * 48), { width: 64, height: 48 });
  assert.deepEqual(squarest(1024 * 1024), { width: 1024, height: 1024 });
  assert.deepEqual(squarest(7), { width: 7, height: 1 });
});

test("positions of the slider and bytes belong together", () => {
  for (const total of [17, 171395, 5e9])
    for (const position of [0, 1, 500, 999, steps]) {
      const bytes = bytesAt(position, total);
      assert.ok(Math.abs(bytesAt(positionOf(bytes, total), total) - bytes) <= 1);
    }
  assert.deepEqual([bytesAt(steps, 171395), bytesAt(0, 171395)], [171395, 16]);
  assert.deepEqual(ticksOf(171395).map(({ text }) => text), ["0.1 %", "1 %", "10 %", "100 %"]);
  assert.deepEqual(ticksOf(1000).map(({ text }) => text), ["10 %", "100 %"]);
});

test("only all of it is 100 per cent", () => {
  assert.equal(figures.percentText(999_999, 1_000_000), "99.9 %");
  assert.equal(figures.percentText(1_000_000, 1_000_000), "100 %");
  assert.equal(figures.percentText(123, 1_000_000), "0.012 %");
  assert.equal(figures.distanceText(Infinity), "every sample equal");
  assert.equal(figures.rateText(12684, 405900), "0.250");
});

test("the point under the pointer stays there when the view zooms", () => {
  const view = new View();
  view.resize({ width: 800, height: 600 });
  view.show({ width: 4000, height: 3000 });
  assert.equal(view.scale, 0.2);
  assert.equal(view.reduction(), 2);
  const anchor = { x: 500, y: 200 };
  const before = view.pointAt(anchor);
  view.zoomBy(4, anchor);
  const after = view.pointAt(anchor);
  assert.ok(Math.abs(before.x - after.x) < 1e-9 && Math.abs(before.y - after.y) < 1e-9);
  assert.equal(view.reduction(), 0);
});

test("the picture cannot leave the stage, and small ones are enlarged by whole numbers", () => {
  const view = new View();
  view.resize({ width: 800, height: 600 });
  view.show({ width: 4000, height: 3000 });
  view.zoomTo(1);
  view.pan(1e6, -1e6);
  assert.deepEqual(view.corner(), { x: 0, y: -2400 });
  view.show({ width: 33, height: 65 });
  assert.equal(view.scale, 8);
  view.show({ width: 300, height: 250 });
  assert.equal(view.scale, 2);
  assert.deepEqual(view.region(), { x: 0, y: 0, width: 300, height: 250 });
});
