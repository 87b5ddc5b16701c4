// Golden streams, all of them and both ways: the bytes and the samples of the tool.

import assert from "node:assert/strict";
import { createHash } from "node:crypto";
import test from "node:test";

import { loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { load } from "../../build/wasm/package/tesk.mjs";
import { assertSameBytes, bytesOf, decoded, golden, goldenStreams, hasGolden, status, teskError } from "./support.mjs";

const decoder = await load();
const encoder = await loadEncoder();
const streams = goldenStreams();
const imageOf = (stream) => stream.split(".")[0];
/** Images whose complete stream needs no special care: the tool and the library write the same. */
const restored = streams.filter(({ command, exact }) => command.length === 7 && exact);
const plain = new Set(restored.map(({ stream }) => imageOf(stream)));

/** Returns: the image of a compress command: c FILE BYTES BITS WIDTH HEIGHT STREAM [RATE [QUALITY]]. */
function imageOfCommand([, raw, bytesPerPixel, bitsPerSample, width, height]) {
  const samples = golden(hasGolden(raw) ? raw : `${imageOf(raw)}.raw`);
  return { width: +width, height: +height, bytesPerPixel: +bytesPerPixel, bitsPerSample: +bitsPerSample, samples };
}

/** Returns: the budget that a rate stands for. */
const budgetOf = ([, , , , , , , rate], { samples }) => (rate ? Math.max(Math.floor(samples.length * rate), 16) : 0);

test("the list has streams of all kinds", () => {
  assert.ok(streams.length > 90 && plain.size > 15);
  for (const kind of ["g8_", "g16_", "rgb_"]) assert.ok([...plain].some((name) => name.startsWith(kind)));
});

for (const { stream, decodes, hash, exact } of streams)
  test(`${stream} decodes as in the tool`, () => {
    if (!decodes) return assert.throws(() => decoded(decoder, golden(stream)), teskError(status.invalidStream));
    const samples = bytesOf(decoded(decoder, golden(stream)));
    assert.equal(createHash("sha256").update(samples).digest("hex").slice(0, 16), hash);
    if (exact && hasGolden(`${imageOf(stream)}.raw`)) assertSameBytes(samples, golden(`${imageOf(stream)}.raw`));
  });

// A third number, the quality, is not offered here; rates below a header are budgets of nothing in memory.
const made = streams.filter(({ stream, command }) =>
  plain.has(imageOf(stream)) && command.length < 9 && hasGolden(command[1]));
for (const { stream, command } of made)
  test(`${stream} is made of its image`, () => {
    const image = imageOfCommand(command);
    const budget = budgetOf(command, image);
    for (const verify of [true, false])
      assertSameBytes(encoder.encode(image, { budget, verify }), golden(stream), `verify: ${verify}`);
    // The bits that are found are those that the samples use.
    const { bitsPerSample, ...withoutBits } = image;
    if (bitsPerSample > 8) assertSameBytes(encoder.encode(withoutBits, { budget }), golden(stream));
  });

const special = streams.filter(({ stream, command }) =>
  !plain.has(imageOf(stream)) && command.length === 7 && hasGolden(command[1]) && command[4] > 1);
for (const { stream, command } of special)
  test(`${imageOf(stream)} comes back, which the tool's ${command[0]} does not do`, () => {
    const image = imageOfCommand(command);
    const picture = decoded(decoder, encoder.encode(image));
    assert.equal(picture.complete, true);
    assertSameBytes(bytesOf(picture), image.samples);
  });

test("an image with a side of 1 is refused", () => {
  const image = imageOfCommand(streams.find(({ stream }) => stream === "g8_one_1x1.c.tk").command);
  assert.throws(() => encoder.encode(image), teskError(9));
});
