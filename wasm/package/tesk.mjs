// The decoder: streams of tesk, whole or as far as they have come, to samples.
// Types and contracts: tesk.d.mts.

import { bytesOfFile, compile, Library, status, TeskError } from "./instance.mjs";

export { toRgba } from "./rgba.mjs";
export { TeskError };

const firstRoom = 1 << 16;
const mostPixels = 2 ** 28;

export async function load(source) {
  // Written out, so that bundlers see which file is meant.
  const bytes = source ?? bytesOfFile(new URL("./tesk-decoder.wasm", import.meta.url));
  return new Decoder(await Library.of(await compile(bytes)));
}

export class Decoder {
  #library;
  #codec;
  #stream = 0;
  #room = 0;
  #size = 0;
  #samples = 0;

  /** Use load. */
  constructor(library) {
    this.#library = library;
    this.#codec = library.makeCodec(0);
  }

  get bytes() {
    return this.#size;
  }

  push(chunk) {
    const library = this.#open();
    if (chunk?.BYTES_PER_ELEMENT !== 1) throw new TeskError("a chunk is no Uint8Array", status.invalidArgument);
    // Growing moves the memory, and takes views of it away.
    const bytes = library.owns(chunk) ? chunk.slice() : chunk;
    this.#makeRoom(this.#size + bytes.length);
    library.bytes(this.#stream + this.#size, bytes.length).set(bytes);
    this.#size += bytes.length;
  }

  stream() {
    return this.#open().bytes(this.#stream, this.#size);
  }

  /** Twice as much as is needed, or exactly that where there is no more. */
  #makeRoom(bytes) {
    if (bytes <= this.#room) return;
    const library = this.#library;
    let room = Math.max(2 * bytes, firstRoom);
    try {
      this.#stream = library.grow(this.#stream, room);
    } catch {
      room = bytes;
      this.#stream = library.grow(this.#stream, room);
    }
    this.#room = room;
  }

  reset() {
    const library = this.#open();
    this.#freeSamples();
    library.free(this.#stream);
    this.#stream = this.#room = this.#size = 0;
  }

  close() {
    // The memory of an instance goes with the instance.
    this.#library = null;
    this.#size = 0;
  }

  probe() {
    const library = this.#open();
    if (this.#size < 16) return null;
    const image = library.image();
    const answer = library.call("tesk_probe", this.#stream, this.#size, image);
    if (answer !== status.ok) throw library.error(answer);
    const info = library.readImage();
    return { ...info, reductions: this.#reductions(info) };
  }

  /** The picture of each reduction is half as wide, until there is no further one. */
  #reductions(info) {
    let levels = 0;
    while (this.#reduced(info, levels + 1) !== null) ++levels;
    return levels;
  }
  #reduced(info, levels) {
    const image = this.#library.image(info);
    const answer = this.#library.call("tesk_reduced_image", image, levels, image);
    return answer === status.ok ? this.#library.readImage() : null;
  }

  measure() {
    const library = this.#open();
    const answer = library.call("tesk_measure", this.#pointer(), this.#size, library.number);
    if (answer !== status.ok && answer !== status.cut) throw library.error(answer);
    return { bytes: library.readNumber(), complete: answer === status.ok };
  }

  decode({ prefix = this.#size, reduce = 0, maxPixels = mostPixels } = {}) {
    const library = this.#open();
    const info = this.#pictureInfo(reduce, maxPixels);
    const bytes = info.width * info.height * info.bytesPerPixel;
    this.#freeSamples();
    this.#samples = library.allocate(bytes);
    const streamBytes = Math.min(Math.max(Math.trunc(prefix) || 0, 0), this.#size);
    const answer = library.call(
      "tesk_decompress_reduced", this.#codec, this.#stream, streamBytes, reduce, this.#samples, bytes, 0, 0);
    if (answer !== status.ok && answer !== status.cut) throw library.error(answer);
    return { ...info, complete: answer === status.ok, samples: this.#view(info) };
  }

  #pictureInfo(reduce, maxPixels) {
    const whole = this.probe();
    if (whole === null) throw this.#library.error(status.invalidStream, `: ${this.#size} bytes`);
    // A number that is none of these would be one in the call.
    if (!(Number.isInteger(reduce) && reduce >= 0 && reduce <= whole.reductions))
      throw this.#library.error(status.unsupportedFormat, `: ${whole.reductions} reductions, not ${reduce}`);
    const info = this.#reduced(whole, reduce);
    if (!(info.width * info.height <= maxPixels))
      throw this.#library.error(status.limitExceeded, `: ${info.width} x ${info.height}, at most ${maxPixels} pixels`);
    return { ...info, reductions: whole.reductions - reduce };
  }

  #view({ width, height, bytesPerPixel }) {
    const bytes = this.#library.bytes(this.#samples, width * height * bytesPerPixel);
    return bytesPerPixel === 2 ? new Uint16Array(bytes.buffer, bytes.byteOffset, width * height) : bytes;
  }

  /** Where an empty stream would stand. */
  #pointer() {
    return this.#stream || this.#library.number;
  }

  #freeSamples() {
    this.#library.free(this.#samples);
    this.#samples = 0;
  }

  #open() {
    if (this.#library === null) throw new TeskError("the decoder is closed", status.invalidArgument);
    return this.#library;
  }
}
