/**
 * Decodes streams of tesk, a lossless, embedded codec for raw images, in WebAssembly: whole, or as far as
 * they have come. The stream: docs/format.md in the sources of tesk.
 */

/** The geometry of an image. */
export interface Info {
  /** Pixels, 0 to 65535. */
  readonly width: number;
  readonly height: number;
  /** 1: 8-bit gray, 2: 16-bit gray, 3: interleaved 8-bit red, green, blue. */
  readonly bytesPerPixel: number;
  /** Significant bits of one sample: 8 for red, green, blue, not 24. */
  readonly bitsPerSample: number;
  /** How often the sides can be halved: the most that `reduce` may be, 0 to 5. */
  readonly reductions: number;
}

/** A picture, or an approximation of it. */
export interface Picture extends Info {
  /** Whether the stream was complete. If so, and not reduced, samples are those of the image, bit by bit. */
  readonly complete: boolean;
  /**
   * Row by row without gaps: width x height x (3 for colours, else 1). Uint16Array for 2 bytes per pixel.
   * A view of the decoder's memory: the next call of the decoder may take it away. Copy what you keep (`slice`).
   */
  readonly samples: Uint8Array | Uint16Array;
}

export interface DecodeOptions {
  /** Bytes of the stream to decode, 16 or more; more than have come are these. All that have come, if left out. */
  prefix?: number;
  /** The picture has 1 : 2^reduce of the image's sides, rounded up, in a part of the time. 0, if left out. */
  reduce?: number;
  /** Larger pictures are refused. 2^28, if left out. */
  maxPixels?: number;
}

/** What the module is made of: its bytes, a response with them, or the compiled module. */
export type Source = Response | Promise<Response> | BufferSource | WebAssembly.Module;

/**
 * Makes a decoder, with an instance of its own.
 *
 * Without a source it takes tesk-decoder.wasm from beside this file. Several decoders: compile once, and
 * load from the module.
 *
 * Throws: Error when the file is not to be had, WebAssembly.CompileError when it is none.
 */
export function load(source?: Source): Promise<Decoder>;

/**
 * A stream as far as it has come. For one thread; a decode blocks it, so pages decode in a worker.
 *
 * Memory: the stream, up to twice its length while it grows, the last picture, and a few rows. It is
 * given back for further use by `reset`, to the system with the decoder.
 */
export class Decoder {
  private constructor();

  /** Bytes that have come. */
  readonly bytes: number;

  /**
   * Adds what has come. The chunk is copied; it may be a view of the decoder's own memory.
   *
   * Throws: TeskError without memory, or when the chunk has no bytes as elements; the stream is as before.
   */
  push(chunk: Uint8Array): void;

  /** Returns: the bytes that have come: a view of the decoder's memory, which the next call may take away. */
  stream(): Uint8Array;

  /** Forgets the stream and the picture. */
  reset(): void;

  /** Lets go of all memory. Every other call then throws TeskError. */
  close(): void;

  /** Returns: the geometry; null before 16 bytes have come. Throws: TeskError when it is no stream. */
  probe(): Info | null;

  /**
   * Finds where the stream ends, without decoding. Returns: its bytes, those that have come when it is not
   * complete; what follows them is not part of it. Throws: TeskError when it is no stream, or broken.
   */
  measure(): { bytes: number; complete: boolean };

  /**
   * Decodes the stream as far as it has come.
   *
   * Throws: TeskError when it is no stream or broken, the picture is larger than `maxPixels`, the memory
   * does not hold it, or the image has fewer reductions. The decoder stays usable.
   */
  decode(options?: DecodeOptions): Picture;
}

/**
 * Makes the pixels of a canvas: `new ImageData(toRgba(picture), picture.width)`. Opaque.
 *
 * Samples up to the first number of the window are black, from the second on white; where the second is not the
 * larger one, all above the first are white. Without a window it is all that `bitsPerSample` can say, as far as the
 * samples can.
 *
 * Throws: TeskError when the decoder has taken the samples away.
 */
export function toRgba(picture: Picture, window?: readonly [number, number]): Uint8ClampedArray;

/** The message is the library's, with numbers where they help. */
export class TeskError extends Error {
  /** A tesk_status of tesk/tesk.h: 3 no stream or broken, 4 not supported, 5 too large, 6 no memory, 8 wrong use. */
  readonly status: number;
  constructor(message: string, status: number);
}
