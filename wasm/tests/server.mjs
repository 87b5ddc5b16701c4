// A server of files on this machine, which counts what it sends, and can be as bad as others are.

import { createServer } from "node:http";

/** Returns: the first and the last byte of "bytes=A-B". */
function rangeOf(header, size) {
  const [, first, last] = /^bytes=(\d+)-(\d+)$/.exec(header ?? "") ?? [];
  return first === undefined ? null : [Number(first), Math.min(Number(last), size - 1)];
}

export class FileServer {
  /** What clients asked for: { path, range }, in order. */
  requests = [];
  /** Bytes that were handed to the system. */
  sentBytes = 0;
  /** Answers that the client did not wait for. */
  aborted = 0;
  #files;
  #server;

  /** Files: path to { bytes } and ways to be bad. */
  static async of(files) {
    const server = new FileServer(files);
    await new Promise((listening) => server.#server.listen(0, "127.0.0.1", listening));
    return server;
  }
  constructor(files) {
    this.#files = files;
    this.#server = createServer((request, response) => this.#answer(request, response));
  }

  url(path) {
    return `http://127.0.0.1:${this.#server.address().port}/${path}`;
  }

  async close() {
    this.#server.closeAllConnections();
    await new Promise((closed) => this.#server.close(closed));
  }

  #answer(request, response) {
    const path = request.url.slice(1);
    if (this.#files[path]?.type) response.setHeader("Content-Type", this.#files[path].type);
    this.requests.push({ path, range: request.headers.range });
    const file = this.#files[path];
    if (file === undefined) return response.writeHead(404, "Not Found").end("<html>no such file</html>");
    if (file.status) return response.writeHead(file.status).end("no");
    const range = file.ranges === false ? null : rangeOf(request.headers.range, file.bytes.length);
    if (range === null) return this.#sendAll(file, response);
    const [first, last] = range.map((at) => at + (file.shift ?? 0));
    const total = file.total === false ? "*" : file.bytes.length;
    if (first > last) return response.writeHead(416, { "Content-Range": `bytes */${total}` }).end();
    const part = file.bytes.subarray(first, Math.min(last + 1, first + (file.most ?? Infinity)));
    const headers = { "Content-Range": `bytes ${first}-${first + part.length - 1}/${total}`, "Content-Length": part.length };
    if (file.noContentRange) delete headers["Content-Range"];
    this.sentBytes += part.length;
    response.writeHead(206, headers).end(part);
  }

  /** In pieces, so that a client can stop it. */
  #sendAll({ bytes, length = true, pause = 0 }, response) {
    response.writeHead(200, length ? { "Content-Length": bytes.length } : {});
    let at = 0;
    const send = () => {
      while (at < bytes.length) {
        const piece = bytes.subarray(at, at + 10000);
        at += piece.length;
        this.sentBytes += piece.length;
        if (!response.write(piece)) return response.once("drain", send);
        if (pause > 0) return setTimeout(send, pause);
      }
      response.end();
    };
    response.on("close", () => (this.aborted += at < bytes.length ? 1 : 0));
    send();
  }
}
