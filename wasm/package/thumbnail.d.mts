/** Thumbnails of large files on a server, from their first bytes. */

import type { Decoder, Picture } from "./tesk.mjs";

export interface ThumbnailOptions {
  /** The most pixels of the longer side, as far as the image has reductions. Default: 256. */
  side?: number;
  /** How many bits to download for each sample of the thumbnail; not the depth of the image. Default: 2. See README.md. */
  bitsPerSample?: number;
  signal?: AbortSignal;
}

export interface Thumbnail {
  /** A view of the decoder's memory, as `Decoder.decode` returns it. */
  readonly picture: Picture;
  /** The sides are those of the image divided by 2^reduce. */
  readonly reduce: number;
  /** Bytes of the file that were decoded. */
  readonly bytes: number;
  /** Length of the file; null if the server does not say it. */
  readonly fileBytes: number | null;
  /** Number of requests: two ranges, or one if the first 4096 bytes are enough. */
  readonly requests: number;
}

/**
 * Fetches the first bytes of a file by HTTP ranges and decodes a reduced image. If a server has no ranges, the
 * download is stopped when enough has come. The decoder's stream is then this prefix of the file.
 *
 * Throws: Error with the status of the server, TeskError when the file is no stream.
 */
export function fetchThumbnail(decoder: Decoder, url: string | URL, options?: ThumbnailOptions): Promise<Thumbnail>;
