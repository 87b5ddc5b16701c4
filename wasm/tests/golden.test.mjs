// Golden streams, both ways: the bytes and the samples of the tool.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";

import { loadEncoder } from "../../build/wasm/package/encoder.mjs";
import { load } from "../../build/wasm/package/tesk.mjs";

const images = ["g8_photo_161x121", "g16_photo16_96x64", "rgb_photo_33x65", "g8_photo_261x1026"];
const golden = (name) => new Uint8Array(readFileSync(new URL(`../../tests/golden/${name}`, import.meta.url)));

const decoder = await load();
const encoder = await loadEncoder();

for (const name of images)
  test(`${name} comes back, and makes its stream`, () => {
    const stream = golden(`${name}.c.tk`);
    const raw = golden(`${name}.raw`);
    decoder.reset();
    decoder.push(stream);
    const picture = decoder.decode();
    assert.equal(picture.complete, true);
    const { buffer, byteOffset, byteLength } = picture.samples;
    assert.deepEqual(new Uint8Array(buffer, byteOffset, byteLength), raw);
    const samples = picture.samples.slice();
    assert.deepEqual(encoder.encode({ ...picture, samples }), stream);
  });
