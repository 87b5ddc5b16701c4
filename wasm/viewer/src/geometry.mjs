// What the geometry of an image says.

/** Of the kinds of raw samples that the page can be told. */
export const bytesPerPixelOf = { gray8: 1, rgb8: 3, gray16le: 2, gray16be: 2 };

export const isGray = ({ bytesPerPixel }) => bytesPerPixel !== 3;
export const channelsOf = (info) => (isGray(info) ? 1 : 3);
export const samplesOf = (info) => info.width * info.height * channelsOf(info);
export const rawBytesOf = ({ width, height, bytesPerPixel }) => width * height * bytesPerPixel;

/** Returns: bits of a sample. Streams may declare any number. */
export const depthOf = ({ bitsPerSample, bytesPerPixel }) =>
  Math.min(Math.max(bitsPerSample, 1), bytesPerPixel === 2 ? 16 : 8);
