// The encoder: what it declares, cuts and compares.

import assert from "node:assert/strict";
import test from "node:test";

import { Encoder, loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { Library } from "../../build/wasm/package/instance.mjs";
import { load } from "../../build/wasm/package/tesk.mjs";
import { assertSameBytes, bytesOf, Chance, decoded, golden, moduleOf } from "./support.mjs";

const encoder = await loadEncoder();
const decoder = await load();
const chance = new Chance(11);

/** Returns: the bits that a stream of such samples declares. */
function foundBits(samples, bytesPerPixel) {
  const image = { width: 8, height: samples.byteLength / bytesPerPixel / 8, bytesPerPixel, samples };
  const picture = decoded(decoder, encoder.encode(image));
  assertSameBytes(bytesOf(picture), new Uint8Array(samples.buffer));
  return picture.bitsPerSample;
}

test("the bits of 16-bit samples are those that they use, 1 at least", () => {
  for (let bits = 1; bits <= 16; ++bits) {
    const samples = Uint16Array.from({ length: 64 }, () => chance.below(2 ** bits));
    samples[5] = 2 ** bits - 1;
    assert.equal(foundBits(samples, 2), bits);
  }
  assert.equal(foundBits(new Uint16Array(64), 2), 1);
});

test("samples of bytes have 8 bits, however few they use", () => {
  assert.equal(foundBits(new Uint8Array(64), 1), 8);
  assert.equal(foundBits(new Uint8Array(192).fill(1), 3), 8);
});

test("16-bit samples may come as bytes, at any address", () => {
  const raw = golden("g16_photo16_96x64.raw");
  const image = { width: 96, height: 64, bytesPerPixel: 2 };
  for (const samples of [raw, new Uint8Array([0, ...raw]).subarray(1), new Uint16Array(raw.slice().buffer)])
    assertSameBytes(encoder.encode({ ...image, samples }), golden("g16_photo16_96x64.c.tk"));
});

test("every budget is a prefix of the stream, and opens", () => {
  const image = { width: 20, height: 100, bytesPerPixel: 1, samples: golden("g8_ramp_20x100.raw") };
  const stream = golden("g8_ramp_20x100.c.tk");
  for (let budget = 16; budget <= stream.length + 2; ++budget) {
    const cut = encoder.encode(image, { budget });
    assertSameBytes(cut, stream.subarray(0, budget), `${budget}`);
    assert.equal(decoded(decoder, cut).width, 20);
  }
});

test("small images of all sizes come back", () => {
  for (const bytesPerPixel of [1, 2, 3])
    for (let width = 2; width <= 20; ++width)
      for (let height = 2; height <= 20; height += 3) {
        const samples = chance.bytes(width * height * bytesPerPixel);
        const picture = decoded(decoder, encoder.encode({ width, height, bytesPerPixel, samples }));
        assert.equal(picture.complete, true);
        assertSameBytes(bytesOf(picture), samples, `${width} x ${height} x ${bytesPerPixel}`);
      }
});

test("a stream is the caller's own", () => {
  const image = { width: 64, height: 64, bytesPerPixel: 1, samples: golden("g8_photo_64x64.raw") };
  const first = encoder.encode(image);
  encoder.encode({ ...image, samples: chance.bytes(4096) });
  assertSameBytes(first, golden("g8_photo_64x64.c.tk"));
  assert.equal(first.buffer.byteLength, first.length);
});

test("`verify` decides whether the codec compares", async () => {
  const library = await Library.of(moduleOf("encoder"));
  const flags = new Map();
  const { makeCodec, call } = Library.prototype;
  let used;
  library.makeCodec = (given) => {
    const codec = makeCodec.call(library, given);
    flags.set(codec, given);
    return codec;
  };
  library.call = (name, ...values) => {
    if (name === "tesk_compress_to_block") used = flags.get(values[0]);
    return call.call(library, name, ...values);
  };
  const spied = new Encoder(library);
  const image = { width: 8, height: 8, bytesPerPixel: 1, samples: new Uint8Array(64) };
  // TESK_UNVERIFIED is 2.
  for (const [options, expected] of [[undefined, 0], [{}, 0], [{ verify: true }, 0], [{ verify: false }, 2]]) {
    spied.encode(image, options);
    assert.equal(used, expected, JSON.stringify(options));
  }
});
