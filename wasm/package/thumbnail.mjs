// A small picture from the first bytes of a stream on a server. Types and contracts: thumbnail.d.mts.

import { TeskError } from "./tesk.mjs";

const firstBytes = 4096;
const rangeNotSatisfiable = 416;

export async function fetchThumbnail(decoder, url, { side = 256, bitsPerSample = 2, signal } = {}) {
  const file = new RemoteFile(url, signal);
  let reduce;
  try {
    decoder.reset();
    decoder.push(await file.read(firstBytes));
    const info = decoder.probe();
    if (info === null) throw new TeskError(`${url}: ${decoder.bytes} bytes are no stream`, 3);
    reduce = reductionFor(info, side);
    decoder.push(await file.read(bytesFor(info, reduce, bitsPerSample)));
  } finally {
    await file.close();
  }
  const picture = decoder.decode({ reduce });
  return { picture, reduce, bytes: decoder.bytes, fileBytes: file.totalBytes, requests: file.requests };
}

/** Returns: the least reduction whose sides are at most `side`, or the largest that there is. */
function reductionFor({ width, height, reductions }, side) {
  let reduce = 0;
  while (reduce < reductions && Math.max(width, height) > side * 2 ** reduce) ++reduce;
  return reduce;
}

function bytesFor({ width, height, bytesPerPixel }, reduce, bitsPerSample) {
  const samples = Math.ceil(width / 2 ** reduce) * Math.ceil(height / 2 ** reduce) * (bytesPerPixel === 3 ? 3 : 1);
  return Math.ceil((samples * bitsPerSample) / 8);
}

/** The beginning of a file, read by ranges, or from one answer of a server that knows no ranges. */
class RemoteFile {
  requests = 0;
  totalBytes = null;
  #url;
  #signal;
  #position = 0;
  /** The body of a whole answer, and what of it was taken but not yet given. */
  #body = null;
  #surplus = new Uint8Array();

  constructor(url, signal) {
    this.#url = url;
    this.#signal = signal;
  }

  /** Returns: what is missing until `end` bytes of the file have been given, as far as there is more. */
  async read(end) {
    if (end <= this.#position) return new Uint8Array();
    const bytes = this.#body === null ? await this.#request(end) : await this.#take(end - this.#position);
    this.#position += bytes.length;
    return bytes;
  }

  async #request(end) {
    if (this.totalBytes !== null && this.#position >= this.totalBytes) return new Uint8Array();
    const headers = { Range: `bytes=${this.#position}-${end - 1}` };
    const response = await fetch(this.#url, { headers, signal: this.#signal });
    ++this.requests;
    if (response.status === rangeNotSatisfiable) return new Uint8Array();
    if (!response.ok) throw new Error(`${this.#url}: ${response.status} ${response.statusText}`);
    if (response.status === 206) {
      this.#checkRange(response.headers.get("Content-Range"), end);
      return new Uint8Array(await response.arrayBuffer());
    }
    return this.#begin(response, end);
  }

  /** "bytes 0-4095/123456", or * for the last number. Other sites may hide it: CORS. */
  #checkRange(given, end) {
    const [, first, total] = /^bytes (\d+)-\d+\/(\d+|\*)$/.exec(given) ?? [];
    if (first !== undefined && Number(first) !== this.#position)
      throw new Error(`${this.#url}: ${given} instead of bytes ${this.#position}-${end - 1}`);
    this.totalBytes = Number.isNaN(Number(total)) ? null : Number(total);
  }

  /** A server without ranges sends all of the file: what is not needed stays unread. */
  async #begin(response, end) {
    this.totalBytes = Number(response.headers.get("Content-Length")) || null;
    this.#body = response.body.getReader();
    await this.#take(this.#position);
    return this.#take(end - this.#position);
  }

  async #take(count) {
    const parts = [];
    let missing = count;
    while (missing > 0) {
      if (this.#surplus.length === 0) {
        const { done, value } = await this.#body.read();
        if (done) break;
        this.#surplus = value;
      }
      parts.push(this.#surplus.subarray(0, missing));
      this.#surplus = this.#surplus.subarray(missing);
      missing -= parts.at(-1).length;
    }
    return new Uint8Array(await new Blob(parts).arrayBuffer());
  }

  async close() {
    await this.#body?.cancel();
  }
}
