// Streams from strangers: each is a picture or a TeskError, and a good stream decodes afterwards.

import assert from "node:assert/strict";
import test from "node:test";

import { load } from "../../build/wasm/package/tesk.mjs";
import { assertSameBytes, assertShape, bytesOf, Chance, decoded, golden, header, status, teskError } from "./support.mjs";

const decoder = await load();
const anyStatus = teskError(status.invalidStream, status.unsupportedFormat, status.limitExceeded, status.outOfMemory);
const maxPixels = 2 ** 20;

/** Returns: whether there was a picture. */
function survives(stream, options) {
  decoder.reset();
  decoder.push(stream);
  let picture = null;
  for (const call of [() => decoder.probe(), () => decoder.measure(), () => (picture = decoder.decode(options))])
    try {
      call();
    } catch (error) {
      anyStatus(error);
    }
  if (picture !== null) assertShape(picture);
  return picture !== null;
}

const goodStream = golden("rgb_photo_33x65.c.tk");
const goodImage = golden("rgb_photo_33x65.raw");
function assertUsable() {
  const picture = decoded(decoder, goodStream);
  assert.equal(picture.complete, true);
  assertSameBytes(bytesOf(picture), goodImage);
}

const images = [
  "g8_photo_64x64", "g8_ramp_20x100", "g8_photo_3x100", "rgb_photo_64x48", "rgb_noise_16x16", "g16_photo16_96x64",
  "g16_noise16_32x32",
];
const streams = images.map((image) => golden(`${image}.c.tk`));

/** Ways to damage a stream, in place or by a new one. */
const damages = {
  "one flipped bit": (stream, chance) => {
    stream[chance.below(stream.length)] ^= 1 << chance.below(8);
    return stream;
  },
  "many flipped bits": (stream, chance) => {
    for (let flips = 1 + chance.below(40); flips > 0; --flips)
      stream[16 + chance.below(stream.length - 16)] ^= 1 << chance.below(8);
    return stream;
  },
  "a piece of junk": (stream, chance) => {
    const at = chance.below(stream.length);
    stream.set(chance.bytes(chance.below(stream.length - at)), at);
    return stream;
  },
  "a piece that is missing": (stream, chance) => {
    const at = 16 + chance.below(stream.length - 16);
    return Buffer.concat([stream.subarray(0, at), stream.subarray(at + 1 + chance.below(50))]);
  },
  "another header": (stream, chance) => {
    stream.set(header(chance.below(900), chance.below(900), 1 + chance.below(4), chance.below(256)));
    return stream;
  },
  "other sides": (stream, chance) => {
    for (const at of [6, 8]) stream.set([chance.below(256), chance.below(6)], at);
    return stream;
  },
  "a header and junk": (stream, chance) => {
    stream.set(chance.bytes(stream.length - 16), 16);
    return stream;
  },
};

for (const [what, damage] of Object.entries(damages))
  test(`1000 streams with ${what}, cut anywhere`, () => {
    const chance = new Chance(what.length);
    let pictures = 0;
    for (let count = 0; count < 1000; ++count) {
      const stream = damage(streams[count % streams.length].slice(), chance);
      const cut = chance.below(4) === 0 ? stream.length : chance.below(stream.length + 1);
      pictures += survives(stream.subarray(0, cut), { reduce: chance.below(3), maxPixels });
      if (count % 20 === 0) assertUsable();
    }
    assertUsable();
    assert.ok(pictures > 50, `${pictures} pictures: nothing was tried`);
  });

test("junk is no stream", () => {
  const chance = new Chance(3);
  for (let bytes = 0; bytes < 300; ++bytes) assert.equal(survives(chance.bytes(bytes)), false);
  assertUsable();
});

test("huge sizes are refused before anything is allocated", () => {
  for (const bytesPerPixel of [1, 2, 3]) {
    const stream = header(65535, 65535, bytesPerPixel);
    assert.throws(() => decoded(decoder, stream), teskError(status.limitExceeded));
    for (const limit of [2 ** 32, Infinity])
      assert.throws(() => decoded(decoder, stream, { maxPixels: limit }), teskError(status.outOfMemory));
  }
  assertUsable();
});

test("maxPixels is about the picture, not about the image", () => {
  const stream = golden("g8_photo_161x121.c.tk");
  for (const reduce of [0, 1, 2]) {
    const { width, height } = decoded(decoder, stream, { reduce });
    assertShape(decoder.decode({ reduce, maxPixels: width * height }));
    assert.throws(() => decoder.decode({ reduce, maxPixels: width * height - 1 }), teskError(status.limitExceeded));
  }
  assert.throws(() => decoder.decode({ maxPixels: 0 }), teskError(status.limitExceeded));
});

test("a large picture of a short stream comes in a moment, and its memory is used again", () => {
  const picture = decoded(decoder, header(16000, 4000), { maxPixels: 2 ** 26 });
  assert.equal(picture.samples.length, 64e6);
  assertUsable();
});
