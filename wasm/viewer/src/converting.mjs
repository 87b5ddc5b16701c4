// Other pictures to streams: the pixels of a canvas, and raw samples. Runs in the worker.

import { bytesPerPixelOf } from "./geometry.mjs";

/** Returns: whether red, green and blue are equal everywhere, and whether all pixels are opaque. */
function look(rgba) {
  let isGray = true;
  let isOpaque = true;
  for (let i = 0; i < rgba.length; i += 4) {
    isGray &&= rgba[i] === rgba[i + 1] && rgba[i] === rgba[i + 2];
    isOpaque &&= rgba[i + 3] === 255;
  }
  return { isGray, isOpaque };
}

/** Returns: an image of the pixels of a canvas without their alpha: gray if they are all gray. */
export function imageOfCanvas({ width, height, rgba }) {
  const { isGray, isOpaque } = look(rgba);
  const bytesPerPixel = isGray ? 1 : 3;
  const samples = new Uint8Array(width * height * bytesPerPixel);
  for (let i = 0, k = 0; k < samples.length; i += 4)
    for (let channel = 0; channel < bytesPerPixel; ++channel) samples[k++] = rgba[i + channel];
  return { image: { width, height, bytesPerPixel, samples }, isOpaque };
}

/** Returns: an image of raw samples. Requires: as many bytes as it needs, behind those to skip. */
export function imageOfRaw({ bytes, width, height, kind, skip }) {
  const bytesPerPixel = bytesPerPixelOf[kind];
  const samples = bytes.slice(skip, skip + width * height * bytesPerPixel);
  if (kind === "gray16be") swapBytes(samples);
  return { width, height, bytesPerPixel, samples };
}

function swapBytes(samples) {
  for (let i = 0; i < samples.length; i += 2) [samples[i], samples[i + 1]] = [samples[i + 1], samples[i]];
}

/** Returns: the stream of an image, the time that it took, and whether the image came back. */
export function convert(encoder, decoder, image) {
  const begin = performance.now();
  const stream = encoder.encode(image);
  const milliseconds = performance.now() - begin;
  decoder.reset();
  decoder.push(stream);
  const { samples } = decoder.decode();
  const back = new Uint8Array(samples.buffer, samples.byteOffset, samples.byteLength);
  const isEqual = back.length === image.samples.length && back.every((byte, i) => byte === image.samples[i]);
  decoder.reset();
  return { stream, milliseconds, isEqual, rawBytes: image.samples.length };
}
