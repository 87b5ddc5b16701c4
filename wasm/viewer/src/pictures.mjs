// Pictures of a stream as far as it has come: what a stage shows of them, their histogram, their distance
// from the complete picture. Runs in the worker.

import { toRgba } from "../../package/tesk.mjs";
import { channelsOf, depthOf, isGray, rawBytesOf, samplesOf } from "./geometry.mjs";

/** The complete picture is kept for comparison up to so many samples. */
const mostCompared = 2 ** 26;
/** Larger pictures are painted reduced. */
const mostPixels = 2 ** 27;

/**
 * Returns: the reduction whose picture has half a bit for each of its bytes. More pixels would only be
 * blurred ones.
 */
function reductionFor(info, streamBytes) {
  const rawBytes = rawBytesOf(info);
  let reduce = 0;
  while (reduce < info.reductions && rawBytes / 4 ** reduce > 16 * streamBytes) ++reduce;
  return reduce;
}

/** Returns: the least reduction that the decoder takes without being asked for more pixels. */
function reductionForMemory({ width, height }) {
  let reduce = 0;
  while ((width * height) / 4 ** reduce > mostPixels) ++reduce;
  return reduce;
}

export class Pictures {
  #decoder;
  #info = null;
  /** Once all has come: bytes of the stream, and whether it is complete. */
  #end = null;
  #shown = null;
  #complete = null;

  constructor(decoder) {
    this.#decoder = decoder;
  }

  reset() {
    this.#decoder.reset();
    this.#info = this.#end = this.#shown = this.#complete = null;
  }
  push(chunk) {
    // The memory that samples are a view of may move.
    this.#shown = null;
    this.#decoder.push(chunk);
    this.#info ??= this.#decoder.probe();
    return this.#info;
  }

  /** Says that no more comes. Returns: the end of the stream; what follows it is something else. */
  end() {
    this.#end = this.#decoder.measure();
    return this.#end;
  }

  /** Returns: the picture of so many bytes. The one that was made last is kept. */
  #picture(bytes, reduce) {
    if (this.#shown?.bytes === bytes && this.#shown.reduce === reduce) return this.#shown;
    this.#shown = null;
    const begin = performance.now();
    const picture = this.#decoder.decode({ prefix: bytes, reduce });
    this.#shown = { bytes, reduce, picture, milliseconds: performance.now() - begin };
    if (isGray(picture)) this.#shown.histogram = histogramOf(picture);
    return this.#shown;
  }

  /**
   * Returns: the pixels of a region of the image, at the reduction that the bytes carry, or at that which the
   * stage has pixels for.
   */
  paint({ bytes, region, reduction, window }) {
    const isAll = this.#end?.complete && bytes === this.#end.bytes;
    const carried = isAll ? 0 : reductionFor(this.#info, bytes);
    const reduce = Math.min(Math.max(reduction, carried, reductionForMemory(this.#info)), this.#info.reductions);
    const { picture, milliseconds, histogram } = this.#picture(bytes, reduce);
    const part = crop(picture, region, reduce);
    const rgba = toRgba(part, window);
    const { width, height, complete } = picture;
    const size = { width, height };
    return { reduce, milliseconds, complete, size, rgba, part: placeOf(part, reduce), histogram };
  }

  /** Returns: decibels of a prefix against the complete picture; null where that is too large to keep. */
  distance(bytes) {
    if (samplesOf(this.#info) > mostCompared) return null;
    this.#complete ??= this.#picture(this.#end.bytes, 0).picture.samples.slice();
    if (bytes === this.#end.bytes) return Infinity;
    const { samples } = this.#picture(bytes, 0).picture;
    let sum = 0;
    for (let i = 0; i < samples.length; ++i) sum += (samples[i] - this.#complete[i]) ** 2;
    return 10 * Math.log10(((2 ** depthOf(this.#info) - 1) ** 2 * samples.length) / sum);
  }

  /** Returns: the bytes of the stream, for saving. */
  stream() {
    return this.#decoder.stream().slice(0, this.#end?.bytes);
  }
}

/** Returns: the pixels of the picture under a region of the image, as a picture, and where they stand. */
function crop(picture, region, reduce) {
  const step = 2 ** reduce;
  const left = Math.floor(region.x / step);
  const top = Math.floor(region.y / step);
  const width = Math.min(Math.ceil((region.x + region.width) / step), picture.width) - left;
  const height = Math.min(Math.ceil((region.y + region.height) / step), picture.height) - top;
  if (width === picture.width && height === picture.height) return { ...picture, left, top };
  const parts = channelsOf(picture);
  const samples = new picture.samples.constructor(width * height * parts);
  for (let row = 0; row < height; ++row) {
    const begin = ((top + row) * picture.width + left) * parts;
    samples.set(picture.samples.subarray(begin, begin + width * parts), row * width * parts);
  }
  return { ...picture, width, height, samples, left, top };
}

/** Returns: pixels of a cropped picture, and the place of its corner in the image. */
function placeOf({ left, top, width, height }, reduce) {
  return { x: left * 2 ** reduce, y: top * 2 ** reduce, width, height };
}

/** Returns: how many samples of a gray picture each of up to 512 ranges of values has, and a window for it. */
function histogramOf(picture) {
  const { samples } = picture;
  const counts = new Uint32Array(2 ** depthOf(picture));
  // A stream may hold larger samples than it declares.
  for (const sample of samples) ++counts[Math.min(sample, counts.length - 1)];
  return { bins: binsOf(counts, 512), window: windowOf(counts, samples.length) };
}

function binsOf(counts, most) {
  const perBin = Math.max(counts.length / most, 1);
  const bins = new Uint32Array(counts.length / perBin);
  counts.forEach((count, value) => (bins[Math.floor(value / perBin)] += count));
  return bins;
}

/** Returns: the window that leaves half of a hundredth of the samples below it, and above. */
function windowOf(counts, total) {
  const rank = total / 200;
  let low = 0;
  let high = counts.length - 1;
  for (let below = counts[low]; low < high && below <= rank; below += counts[low]) ++low;
  for (let above = counts[high]; high > low && above <= rank; above += counts[high]) --high;
  return [low, Math.max(high, low + 1)];
}
