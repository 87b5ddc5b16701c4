/** Makes streams of tesk in WebAssembly: the same bytes as the C library makes. */

import type { Source } from "./tesk.mjs";

export { TeskError } from "./tesk.mjs";

/** Samples, row by row without gaps. */
export interface Image {
  /** Pixels, 2 to 65535: an image with a side of 1 is refused unless all its samples are 0. */
  readonly width: number;
  readonly height: number;
  /** 1: 8-bit gray, 2: 16-bit gray, 3: interleaved 8-bit red, green, blue. */
  readonly bytesPerPixel: number;
  /** Declared bits: how many low bits of one sample are used. Default: 8; with 2 bytes per pixel, found from the samples. */
  readonly bitsPerSample?: number;
  readonly samples: Uint8Array | Uint8ClampedArray | Uint16Array;
}

export interface EncodeOptions {
  /** The most bytes of the stream, 16 or more: a longer one is cut. Without it, or with 0, the stream is complete. */
  budget?: number;
  /** Whether to verify: decode a complete stream and compare it with the image before it is returned. Default: true. */
  verify?: boolean;
}

/** As `load`, with tesk-encoder.wasm. */
export function loadEncoder(source?: Source): Promise<Encoder>;

/** For one thread. A call takes memory for the samples and the stream; the next call uses it again. */
export class Encoder {
  private constructor();

  /** Returns: a stream, the caller's own. Throws: TeskError; the encoder stays usable. */
  encode(image: Image, options?: EncodeOptions): Uint8Array;
}
