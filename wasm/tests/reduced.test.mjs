// Reduced pictures: sizes, levels, and the samples of the page of the format.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";

import {
  assertShape, bytesOf, decoded, decoderWithLibrary, golden, header, sourceFolder, status, teskError,
} from "./support.mjs";

const { decoder, library } = await decoderWithLibrary();

/** docs/format.md, 6.3: none with a shorter side below 4, one up to 7, and so on, at most five. */
const levelsOf = (width, height) => Math.min(Math.max(Math.floor(Math.log2(Math.min(width, height))) - 1, 0), 5);
const sizeOf = (side, reduce) => Math.ceil(side / 2 ** reduce);

const images = [
  "g8_photo_261x1026", "g8_flat_64x64", "g8_ramp_20x100", "g8_photo_3x100", "g8_one_1x1", "rgb_photo_101x77",
  "rgb_photo_33x65", "g16_photo16_96x64",
];
for (const image of images)
  test(`${image}: every reduction has sides rounded up`, () => {
    const stream = golden(`${image}.c.tk`);
    const whole = decoded(decoder, stream);
    const { width, height, bytesPerPixel, bitsPerSample, reductions } = decoder.probe();
    assert.equal(reductions, levelsOf(width, height));
    for (let reduce = 0; reduce <= reductions; ++reduce) {
      const picture = decoder.decode({ reduce });
      assertShape(picture);
      assert.equal(picture.width, sizeOf(width, reduce));
      assert.equal(picture.height, sizeOf(height, reduce));
      assert.equal(picture.bytesPerPixel, bytesPerPixel);
      assert.equal(picture.bitsPerSample, bitsPerSample);
      assert.equal(picture.reductions, reductions - reduce);
      assert.equal(picture.complete, whole.complete);
    }
    assert.throws(() => decoder.decode({ reduce: reductions + 1 }), teskError(status.unsupportedFormat));
    assert.equal(decoder.decode().complete, whole.complete);
  });

test("sizes are those of tesk_reduced_image", () => {
  const sizes = [[2, 2], [3, 9], [4, 4], [7, 9], [8, 8], [15, 99], [16, 16], [31, 65], [63, 64], [64, 65], [257, 4096]];
  for (const [width, height] of sizes) {
    const { reductions } = decoded(decoder, header(width, height));
    assert.equal(reductions, levelsOf(width, height), `${width} x ${height}`);
    for (let reduce = 0; reduce <= reductions; ++reduce) {
      const image = library.image({ width, height, bytesPerPixel: 1, bitsPerSample: 8 });
      assert.equal(library.call("tesk_reduced_image", image, reduce, image), 0);
      const { width: reducedWidth, height: reducedHeight } = library.readImage();
      const picture = decoder.decode({ reduce });
      assert.deepEqual([picture.width, picture.height], [reducedWidth, reducedHeight]);
    }
  }
});

/** Returns: the blocks between a heading of docs/format.md and the next one. */
function blocksOf(heading) {
  const page = readFileSync(`${sourceFolder}docs/format.md`, "utf8");
  const section = page.split(new RegExp(`^#+ ${heading}`, "m"))[1].split(/^#+ /m)[0];
  return [...section.matchAll(/^```\n(.*?)^```$/gms)].map(([, block]) => block);
}

test("the example of the format's page comes out", () => {
  const hex = blocksOf("16\\.1 ")[0].replace(/^\d\d: /gm, "").trim().split(/\s+/);
  const stream = Uint8Array.from(hex, (byte) => parseInt(byte, 16));
  // Two pictures side by side: the wider one on the left.
  const rows = blocksOf("17\\. ").at(-1).trim().split("\n").map((row) => row.trim().split(/\s+/).map(Number));
  const pictures = [rows.flatMap((row) => row.slice(0, 5)), rows.flatMap((row) => row.slice(5))];
  assert.deepEqual(pictures.map((samples) => samples.length), [20, 6]);
  for (const reduce of [1, 2]) assert.deepEqual([...bytesOf(decoded(decoder, stream, { reduce }))], pictures[reduce - 1]);
});

test("a reduced picture is like the means of the image", () => {
  const raw = golden("g8_photo_261x1026.raw");
  for (const reduce of [1, 2, 3]) {
    const { width, samples } = decoded(decoder, golden("g8_photo_261x1026.c.tk"), { reduce });
    const step = 2 ** reduce;
    let difference = 0, count = 0;
    for (let y = step; y + step < 1026; y += step)
      for (let x = step; x + step < 261; x += step, ++count) {
        let sum = 0;
        for (let dy = -step / 2; dy <= step / 2; ++dy)
          for (let dx = -step / 2; dx <= step / 2; ++dx) sum += raw[(y + dy) * 261 + x + dx];
        difference += Math.abs(samples[(y / step) * width + x / step] - sum / (step + 1) ** 2);
      }
    assert.ok(difference / count < 10, `1 : ${step}: ${difference / count}`);
  }
});

test("a flat image is flat at all sizes", () => {
  for (let reduce = 0; reduce <= 5; ++reduce) {
    const { samples } = decoded(decoder, golden("g8_flat_64x64.c.tk"), { reduce });
    assert.ok(samples.every((sample) => sample === golden("g8_flat_64x64.raw")[0]));
  }
});
