/** Small pictures of large files on a server, from their first bytes. */

import type { Decoder, Picture } from "./tesk.mjs";

export interface ThumbnailOptions {
  /** The longer side has at most so many pixels, unless the image has too few reductions. 256, if left out. */
  side?: number;
  /** Bits to fetch for each sample of the thumbnail. 2, if left out: see README.md. */
  bitsPerSample?: number;
  signal?: AbortSignal;
}

export interface Thumbnail {
  /** A view of the decoder's memory, as `Decoder.decode` returns it. */
  readonly picture: Picture;
  /** 1 : 2^reduce of the image's sides. */
  readonly reduce: number;
  /** Bytes of the file that were decoded. */
  readonly bytes: number;
  /** Bytes of the file; null where the server does not tell. */
  readonly fileBytes: number | null;
  /** Requests that it took: two ranges, or one where the first 4096 bytes are enough. */
  readonly requests: number;
}

/**
 * Fetches the first bytes of a file by HTTP ranges and decodes a small picture. A server without ranges
 * is stopped when enough has come. The decoder's stream is then that beginning of the file.
 *
 * Throws: Error with the status of the server, TeskError when the file is no stream.
 */
export function fetchThumbnail(decoder: Decoder, url: string | URL, options?: ThumbnailOptions): Promise<Thumbnail>;
