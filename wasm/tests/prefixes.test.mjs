// Prefixes: whatever has come is a picture, and chunks may be cut anywhere.

import assert from "node:assert/strict";
import { createHash } from "node:crypto";
import test from "node:test";

import { load } from "../../build/wasm/package/tesk.mjs";
import {
  assertSameBytes, assertShape, bytesOf, Chance, decoded, golden, goldenStreams, hasGolden, status, teskError,
} from "./support.mjs";

const decoder = await load();
const headerBytes = 16;
/** Behind the last bit of a stream: docs/format.md, 9. */
const mostPadding = 2;

const images = ["g8_photo_64x64", "rgb_noise_16x16", "g16_noise16_32x32", "g8_ramp_20x100", "g8_flat_64x64", "g8_zero_64x64"];
for (const image of images)
  test(`${image}: every prefix is a picture, the last ones are the image`, () => {
    const stream = golden(`${image}.c.tk`);
    const raw = golden(`${image}.raw`);
    decoder.reset();
    for (let bytes = 0; bytes <= stream.length; ++bytes) {
      if (bytes > 0) decoder.push(stream.subarray(bytes - 1, bytes));
      assert.equal(decoder.bytes, bytes);
      assert.equal(decoder.probe() === null, bytes < headerBytes);
      if (bytes < headerBytes) {
        assert.throws(() => decoder.decode(), teskError(status.invalidStream));
        continue;
      }
      const picture = decoder.decode();
      assertShape(picture);
      assert.deepEqual(decoder.measure(), { bytes, complete: picture.complete });
      if (picture.complete) assertSameBytes(bytesOf(picture), raw, `${bytes} bytes`);
      if (picture.complete) assert.ok(bytes >= stream.length - mostPadding, `${bytes} bytes are not all`);
    }
    assert.equal(decoder.decode().complete, true);
  });

test("`prefix` is as if no more had come", () => {
  const stream = golden("g8_photo_161x121.c.tk");
  for (const bytes of [16, 17, 100, 1000, 10000]) {
    const expected = bytesOf(decoded(decoder, stream.subarray(0, bytes)));
    assertSameBytes(bytesOf(decoded(decoder, stream, { prefix: bytes })), expected, `${bytes} bytes`);
  }
});

test("no `prefix` reaches beyond what has come", async () => {
  const stream = golden("g8_photo_161x121.c.tk");
  const expected = bytesOf(decoded(await load(), stream.subarray(0, 1000)));
  // The rest of the stream still stands behind these bytes in the memory.
  decoded(decoder, stream);
  decoder.reset();
  decoder.push(stream.subarray(0, 1000));
  for (const prefix of [1000, 1001, 1009, 10691, 2 ** 32, Infinity])
    assertSameBytes(bytesOf(decoder.decode({ prefix })), expected, `${prefix}`);
});

// The tool makes cut streams by itself: what it does with them is known.
for (const { stream, hash } of goldenStreams().filter(({ stream }) => stream.includes(".C_"))) {
  const image = stream.split(".")[0];
  const whole = golden(`${image}.c.tk`);
  const cut = golden(stream);
  if (cut.length < headerBytes || Buffer.compare(cut, whole.subarray(0, cut.length)) !== 0) continue;
  test(`${image}: ${cut.length} bytes are as ${stream}`, () => {
    let samples;
    try {
      samples = bytesOf(decoded(decoder, whole, { prefix: cut.length }));
    } catch {
      samples = new Uint8Array();
    }
    assert.equal(createHash("sha256").update(samples).digest("hex").slice(0, 16), hash);
  });
}

test("chunks of any sizes make the same stream", () => {
  const chance = new Chance(1);
  for (const image of ["g8_photo_261x1026", "rgb_photo_33x65", "g16_photo16_96x64"]) {
    const stream = golden(`${image}.c.tk`);
    assert.ok(hasGolden(`${image}.raw`));
    for (const most of [1, 7, 100, 5000, 70000, 200000]) {
      if (stream.length / most > 20000) continue;
      decoder.reset();
      for (let at = 0; at < stream.length; ) {
        const bytes = chance.below(most + 1);
        decoder.push(stream.subarray(at, at + bytes));
        at = Math.min(at + bytes, stream.length);
        assert.equal(decoder.bytes, at);
      }
      const picture = decoder.decode();
      assert.equal(picture.complete, true);
      assertSameBytes(bytesOf(picture), golden(`${image}.raw`), `${image}, chunks up to ${most}`);
    }
  }
});

test("bytes behind a complete stream change nothing, and measure finds its end", () => {
  const chance = new Chance(2);
  for (const image of ["g8_photo_161x121", "rgb_photo_33x65", "g16_photo16_96x64", "g8_zero_64x64"]) {
    const stream = golden(`${image}.c.tk`);
    for (const behind of [1, 16, 1000]) {
      const picture = decoded(decoder, stream);
      decoder.push(chance.bytes(behind));
      assert.deepEqual(decoder.measure(), { bytes: stream.length, complete: true });
      assertSameBytes(bytesOf(decoder.decode()), golden(`${image}.raw`));
      assert.equal(picture.complete, true);
    }
  }
});

test("streams that stand behind each other are told apart", () => {
  const images = ["g8_photo_161x121", "rgb_photo_33x65", "g16_photo16_96x64"];
  let all = Buffer.concat(images.map((image) => golden(`${image}.c.tk`)));
  for (const image of images) {
    assertSameBytes(bytesOf(decoded(decoder, all)), golden(`${image}.raw`));
    all = all.subarray(decoder.measure().bytes);
  }
  assert.equal(all.length, 0);
});

test("measure of nothing and of no stream throws", () => {
  decoder.reset();
  for (const bytes of [0, 3, 15]) {
    assert.throws(() => decoder.measure(), teskError(status.invalidStream), `${bytes}`);
    decoder.push(new Uint8Array(5));
  }
});
