// Memory: it does not grow from call to call, and where there is none left, calls say so and work again later.

import assert from "node:assert/strict";
import test from "node:test";

import { Encoder } from "../../build/wasm/package/encoder.mjs";
import { Library } from "../../build/wasm/package/instance.mjs";
import { assertSameBytes, bytesOf, decoded, decoderWithLibrary, golden, moduleOf, status, teskError } from "./support.mjs";

const images = ["g8_photo_161x121", "rgb_photo_33x65", "g16_photo16_96x64"];
const memoryBytes = (library) => library.bytes(0, 1).buffer.byteLength;

async function encoderWithLibrary() {
  const library = await Library.of(moduleOf("encoder"));
  return { library, encoder: new Encoder(library) };
}

/** Returns: an image of a golden file, as the encoder takes it. */
async function imageOf(name) {
  const { decoder } = await decoderWithLibrary();
  const picture = decoded(decoder, golden(`${name}.c.tk`));
  return { ...picture, samples: picture.samples.slice() };
}

/** All that an instance may have is taken, but for a gap: what a call finds is a part of that. */
class FullMemory {
  #library;
  #gapBytes;
  #blocks = [];

  constructor(library, gapBytes) {
    this.#library = library;
    this.#gapBytes = gapBytes;
    const gap = library.allocate(gapBytes);
    for (let bytes = 2 ** 31; bytes >= 1; ) {
      const block = library.call("malloc", bytes) >>> 0;
      if (block === 0) bytes >>>= 1;
      else this.#blocks.push(block);
    }
    library.free(gap);
  }

  /** Runs a call that finds about so many bytes: as many as the last one, or more. */
  with(bytes, call) {
    const taken = this.#library.call("malloc", this.#gapBytes - bytes) >>> 0;
    assert.notEqual(taken, 0, "a call kept memory");
    try {
      return call();
    } finally {
      this.#library.free(taken);
    }
  }

  release() {
    for (const block of this.#blocks) this.#library.free(block);
  }
}

/** Returns: what the call answered, null where it found no memory. All other errors are errors. */
function unlessFull(call) {
  try {
    return call();
  } catch (error) {
    teskError(status.outOfMemory)(error);
    return null;
  }
}

/** Calls with ever more memory: some find too little, some enough, and these answer `expected`. */
function assertFullOrRight(library, call, expected, gapBytes = 600000) {
  const memory = new FullMemory(library, gapBytes);
  const answers = { none: 0, right: 0 };
  for (let bytes = 0; bytes < gapBytes; bytes += 1 + bytes / 8) {
    const answer = memory.with(Math.floor(bytes), () => unlessFull(call));
    if (answer !== null) assertSameBytes(answer, expected);
    ++answers[answer === null ? "none" : "right"];
  }
  memory.release();
  assertSameBytes(call(), expected);
  assert.ok(answers.none > 15 && answers.right > 5, JSON.stringify(answers));
}

for (const [name, cut] of [[images[0], 0], [images[1], 500], [images[2], 0], [images[2], 500]])
  test(`${name}, without its last ${cut} bytes: without memory decode throws, with memory it works`, async () => {
    const { decoder, library } = await decoderWithLibrary();
    const stream = golden(`${name}.c.tk`);
    decoder.push(stream.subarray(0, stream.length - cut));
    assertFullOrRight(library, () => bytesOf(decoder.decode()), bytesOf(decoder.decode()));
  });

test("without memory a damaged stream is one, or there is no memory", async () => {
  const { decoder, library } = await decoderWithLibrary();
  decoder.push(golden("g16_photo13_50x66.c.tk"));
  const words = new TextEncoder().encode("no stream");
  const call = () => {
    try {
      return bytesOf(decoder.decode());
    } catch (error) {
      if (error.status !== status.invalidStream) throw error;
      return words;
    }
  };
  assertFullOrRight(library, call, words);
});

for (const [name, budget] of [[images[0], 0], [images[1], 1000], [images[2], 0]])
  test(`${name}, budget ${budget}: without memory encode throws, with memory it works`, async () => {
    const { encoder, library } = await encoderWithLibrary();
    const image = await imageOf(name);
    assertFullOrRight(library, () => encoder.encode(image, { budget }), encoder.encode(image, { budget }), 1200000);
  });

test("without memory push throws, and the stream is as before", async () => {
  const { decoder, library } = await decoderWithLibrary();
  const name = images[0];
  const stream = golden(`${name}.c.tk`);
  decoder.push(stream);
  const memory = new FullMemory(library, 300000);
  // The first room of a stream has 64 kB.
  memory.with(0, () => assert.throws(() => decoder.push(new Uint8Array(200000)), teskError(status.outOfMemory)));
  assert.equal(decoder.bytes, stream.length);
  memory.with(0, () => assert.throws(() => decoder.decode(), teskError(status.outOfMemory)));
  memory.with(0, () => assert.equal(decoder.measure().bytes, stream.length));
  memory.with(300000, () => assertSameBytes(bytesOf(decoder.decode()), golden(`${name}.raw`)));
  memory.release();
  decoder.push(new Uint8Array(200000));
  assert.equal(decoder.bytes, stream.length + 200000);
  assertSameBytes(bytesOf(decoder.decode()), golden(`${name}.raw`));
});

test("where twice the room is not to be had, a chunk gets what it needs", async () => {
  const { decoder, library } = await decoderWithLibrary();
  const memory = new FullMemory(library, 300000);
  memory.with(300000, () => {
    decoder.push(new Uint8Array(200000));
    assert.equal(decoder.bytes, 200000);
    decoder.reset();
  });
  memory.release();
});

test("1000 pictures take the memory of one", async () => {
  const { decoder, library } = await decoderWithLibrary();
  const streams = images.map((name) => golden(`${name}.c.tk`));
  let first;
  for (let count = 0; count < 1000; ++count) {
    const stream = streams[count % streams.length];
    decoded(decoder, stream.subarray(0, count % 4 === 0 ? stream.length / 2 : undefined), { reduce: count % 3 });
    if (count === 20) first = memoryBytes(library);
  }
  assert.equal(memoryBytes(library), first);
});

test("errors keep no memory", async () => {
  const { decoder, library } = await decoderWithLibrary();
  let first;
  for (let count = 0; count < 1000; ++count) {
    assert.throws(() => decoded(decoder, golden("g16_photo13_50x66.c.tk")), teskError(status.invalidStream));
    if (count === 20) first = memoryBytes(library);
  }
  assert.equal(memoryBytes(library), first);
});

test("500 streams take the memory of one", async () => {
  const { encoder, library } = await encoderWithLibrary();
  const all = await Promise.all(images.map(imageOf));
  let first;
  for (let count = 0; count < 500; ++count) {
    encoder.encode(all[count % all.length], { budget: count % 2 ? 500 : 0, verify: count % 4 < 2 });
    assert.throws(() => encoder.encode({ ...all[0], bitsPerSample: 9 }), teskError(status.unsupportedFormat));
    if (count === 20) first = memoryBytes(library);
  }
  assert.equal(memoryBytes(library), first);
});
