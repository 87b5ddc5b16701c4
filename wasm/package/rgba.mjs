// Samples to the pixels of a canvas.

import { status, TeskError } from "./instance.mjs";

/** Returns: what becomes of each value of a sample: 0 up to the lower end of the window, 255 from the upper on. */
function shades([low, high], count) {
  const table = new Uint8Array(count);
  for (let value = 0; value < count; ++value)
    table[value] = value <= low ? 0 : value >= high ? 255 : Math.round((255 * (value - low)) / (high - low));
  return table;
}

/** Streams may declare any number of bits: samples have no more than their bytes. */
const allValues = ({ bitsPerSample, bytesPerPixel }) => [0, 2 ** Math.min(bitsPerSample, bytesPerPixel === 2 ? 16 : 8) - 1];

export function toRgba(picture, window = allValues(picture)) {
  const { samples, bytesPerPixel, width, height } = picture;
  if (samples.length !== width * height * (bytesPerPixel === 3 ? 3 : 1))
    throw new TeskError("the samples are gone: the decoder has worked since", status.invalidArgument);
  const shade = shades(window, bytesPerPixel === 2 ? 65536 : 256);
  const rgba = new Uint8ClampedArray(4 * width * height);
  // Whole pixels are four times as fast as bytes; all browsers run on little-endian machines.
  const pixels = new Uint32Array(rgba.buffer);
  if (bytesPerPixel === 3)
    for (let i = 0, k = 0; i < pixels.length; ++i, k += 3)
      pixels[i] = 0xff000000 | (shade[samples[k + 2]] << 16) | (shade[samples[k + 1]] << 8) | shade[samples[k]];
  else for (let i = 0; i < pixels.length; ++i) pixels[i] = 0xff000000 | (shade[samples[i]] * 0x010101);
  return rgba;
}
