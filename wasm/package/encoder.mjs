// The encoder: samples to a stream of tesk. Types and contracts: encoder.d.mts.

import { bytesOfFile, compile, Library, status, TeskError } from "./instance.mjs";

export { TeskError };

const unverified = 2;
const leastBudget = 16;

export async function loadEncoder(source) {
  // Written out, so that bundlers see which file is meant.
  const bytes = source ?? bytesOfFile(new URL("./tesk-encoder.wasm", import.meta.url));
  return new Encoder(await Library.of(await compile(bytes)));
}

export class Encoder {
  #library;
  #codecs;

  /** Use loadEncoder. */
  constructor(library) {
    this.#library = library;
    this.#codecs = { verified: library.makeCodec(0), unverified: library.makeCodec(unverified) };
  }

  encode(image, { budget = 0, verify = true } = {}) {
    const library = this.#library;
    const bytes = bytesOf(image);
    if (!(budget === 0 || budget >= leastBudget))
      throw library.error(status.invalidArgument, `: a budget of ${budget} bytes`);
    const pixels = library.allocate(bytes.length);
    try {
      library.bytes(pixels, bytes.length).set(bytes);
      const info = { ...image, bitsPerSample: image.bitsPerSample ?? this.#usedBits(image, pixels) };
      return this.#compress(verify ? this.#codecs.verified : this.#codecs.unverified, info, pixels, Math.min(budget, 2 ** 32 - 1));
    } finally {
      library.free(pixels);
    }
  }

  #usedBits(image, pixels) {
    const answer = this.#library.call("tesk_used_bits", this.#library.image(image), pixels, 0, this.#library.number);
    if (answer !== status.ok) throw this.#library.error(answer);
    if (image.bytesPerPixel !== 2) return 8;
    return Math.max(32 - Math.clz32(this.#library.readNumber()), 1);
  }

  #compress(codec, info, pixels, budget) {
    const library = this.#library;
    const answer = library.call(
      "tesk_compress_to_block", codec, library.image(info), pixels, 0, budget, library.number, library.result());
    const { streamBytes, loss } = library.readResult();
    if (answer === status.notRestorable) throw library.error(answer, `: ${library.lossMessage(loss)}`);
    if (answer !== status.ok && answer !== status.cut) throw library.error(answer);
    const block = library.readNumber();
    const stream = library.bytes(block, streamBytes).slice();
    library.call("tesk_release_block", codec, block);
    return stream;
  }
}

/** Other numbers would become one of these in the call. */
const fitsInHeader = (number) => Number.isInteger(number) && number >= 0 && number < 65536;

/** Returns: the samples as bytes. Throws: TeskError where they are not as many as the image has. */
function bytesOf({ width, height, bytesPerPixel, bitsPerSample, samples }) {
  if (![width, height, bytesPerPixel, bitsPerSample ?? 8].every(fitsInHeader))
    throw new TeskError(`${width} x ${height} pixels of ${bytesPerPixel} bytes: sides go up to 65535`, status.unsupportedFormat);
  const needed = width * height * bytesPerPixel;
  const given = samples?.BYTES_PER_ELEMENT === undefined ? "none" : samples.byteLength;
  if (given === needed) return new Uint8Array(samples.buffer, samples.byteOffset, needed);
  throw new TeskError(
    `${width} x ${height} pixels of ${bytesPerPixel} bytes are ${needed} bytes, not ${given}`, status.invalidArgument);
}
