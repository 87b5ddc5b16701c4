/** Makes streams of tesk in WebAssembly: the same bytes as the tool and the library. */

import type { Source } from "./tesk.mjs";

export { TeskError } from "./tesk.mjs";

/** Samples, row by row without gaps. */
export interface Image {
  /** Pixels, 2 to 65535: an image with a side of 1 is refused unless all its samples are 0. */
  readonly width: number;
  readonly height: number;
  /** 1: 8-bit gray, 2: 16-bit gray, 3: interleaved 8-bit red, green, blue. */
  readonly bytesPerPixel: number;
  /** Significant bits of one sample. If left out: 8, or with 2 bytes per pixel what the samples use. */
  readonly bitsPerSample?: number;
  readonly samples: Uint8Array | Uint8ClampedArray | Uint16Array;
}

export interface EncodeOptions {
  /** The most bytes of the stream, 16 or more: it is cut there. Without it, or 0, the stream is complete. */
  budget?: number;
  /** Whether a complete stream is decoded and compared before it is returned. True, if left out. */
  verify?: boolean;
}

/** As `load`, with tesk-encoder.wasm. */
export function loadEncoder(source?: Source): Promise<Encoder>;

/** For one thread. Memory for the samples and the stream is taken for a call, and used again. */
export class Encoder {
  private constructor();

  /** Returns: a stream, the caller's own. Throws: TeskError; the encoder stays usable. */
  encode(image: Image, options?: EncodeOptions): Uint8Array;
}
