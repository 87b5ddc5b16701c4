/**
 * Decodes streams of tesk, a lossless codec for raw images, in WebAssembly: whole ones, and any prefix.
 * The stream is described in docs/format.md in the sources of tesk.
 */

/** The geometry of an image. */
export interface Info {
  /** Pixels, 0 to 65535. */
  readonly width: number;
  readonly height: number;
  /** 1: 8-bit gray, 2: 16-bit gray, 3: interleaved 8-bit red, green, blue. */
  readonly bytesPerPixel: number;
  /** Declared bits: how many low bits of one sample are used. 8 for red, green, blue, not 24. */
  readonly bitsPerSample: number;
  /** The largest `reduce` that the image allows, 0 to 5. */
  readonly reductions: number;
}

/** An image, or an approximation of it. */
export interface Picture extends Info {
  /** Whether the stream was complete. If so, and without `reduce`, the samples are exactly those of the image. */
  readonly complete: boolean;
  /**
   * Row by row without gaps: width x height x (3 for RGB, else 1). Uint16Array for 2 bytes per pixel.
   * A view of the decoder's memory. The next call of the decoder may take it away: copy what you keep (`slice`).
   */
  readonly samples: Uint8Array | Uint16Array;
}

export interface DecodeOptions {
  /** Decodes only the first bytes of the stream: 16 or more. Default: all that have come; never more than these. */
  prefix?: number;
  /** Divides both sides by 2^reduce, rounded up, in less time. Default: 0. */
  reduce?: number;
  /** Images of more pixels are refused. Default: 2^28. */
  maxPixels?: number;
}

/** Where the module comes from: its bytes, a response with them, or the compiled module. */
export type Source = Response | Promise<Response> | BufferSource | WebAssembly.Module;

/**
 * Makes a decoder, with its own instance of the module.
 *
 * Without a source it loads tesk-decoder.wasm from beside this file. For several decoders, compile the module
 * once and load from that.
 *
 * Throws: Error when the file cannot be loaded, WebAssembly.CompileError when it is no module.
 */
export function load(source?: Source): Promise<Decoder>;

/**
 * Holds a stream as far as it has come. For one thread. A decode blocks that thread: pages decode in a worker.
 *
 * Memory: the stream (up to twice its length while it grows), the last image and a few rows. `reset` lets the
 * decoder use it again. The system gets it back with `close`, or when the decoder is dropped.
 */
export class Decoder {
  private constructor();

  /** Bytes that have come. */
  readonly bytes: number;

  /**
   * Adds what has come. The chunk is copied; it may be a view of the decoder's own memory.
   *
   * Throws: TeskError when there is no memory, or the chunk is no array of bytes. The stream is then as before.
   */
  push(chunk: Uint8Array): void;

  /** Returns: the bytes that have come. A view of the decoder's memory, which the next call may take away. */
  stream(): Uint8Array;

  /** Forgets the stream and the image. */
  reset(): void;

  /** Releases all memory. Every other call then throws TeskError. */
  close(): void;

  /** Returns: the geometry; null before 16 bytes have come. Throws: TeskError when it is no stream. */
  probe(): Info | null;

  /**
   * Finds where the stream ends, without decoding. Returns: the length of the stream in bytes, or, if it is not
   * complete, of what has come. Throws: TeskError when it is no stream, or broken.
   */
  measure(): { bytes: number; complete: boolean };

  /**
   * Decodes the stream as far as it has come.
   *
   * Throws: TeskError when it is no stream or a broken one, when the image has more than `maxPixels` or does not fit
   * into memory, and when `reduce` is too large. The decoder stays usable.
   */
  decode(options?: DecodeOptions): Picture;
}

/**
 * Makes the pixels of a canvas: `new ImageData(toRgba(picture), picture.width)`. Opaque.
 *
 * Samples up to the first number of the window are black, from the second on white. If the second is not
 * larger, all samples above the first are white. Without a window: from 0 to the largest value that `bitsPerSample`
 * and the type of the samples allow.
 *
 * Throws: TeskError when the decoder has taken the samples away.
 */
export function toRgba(picture: Picture, window?: readonly [number, number]): Uint8ClampedArray;

/** The message is the library's, with numbers where they help. */
export class TeskError extends Error {
  /** A tesk_status of tesk/tesk.h: 3 no stream or broken, 4 not supported, 5 too large, 6 no memory, 8 wrong use,
   * 9 an image with a side of 1. */
  readonly status: number;
  constructor(message: string, status: number);
}
