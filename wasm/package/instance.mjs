// The C interface in WebAssembly: memory, structs and statuses. Nothing here is public.
// What the calls mean: tesk/tesk.h, where sizes and pointers have 32 bits.

export const status = {
  ok: 0,
  cut: 1,
  invalidStream: 3,
  unsupportedFormat: 4,
  limitExceeded: 5,
  outOfMemory: 6,
  invalidArgument: 8,
  notRestorable: 9,
};

export class TeskError extends Error {
  constructor(message, number) {
    super(message);
    this.name = "TeskError";
    this.status = number;
  }
}

// Bytes of the structs, and where they stand in the scratch memory.
const imageBytes = 20;
const resultBytes = 20;
const optionsBytes = 32;
const place = { image: 0, options: 0, result: 32, number: 52, end: 56 };

/** Any type of content will do: many servers do not know application/wasm. */
async function bytesOfResponse(response) {
  if (!response.ok) throw new Error(`${response.url}: ${response.status} ${response.statusText}`);
  return response.arrayBuffer();
}

/** Returns: the bytes of a file of the package, in browsers and in Node. */
export async function bytesOfFile(url) {
  if (url.protocol !== "file:") return bytesOfResponse(await fetch(url));
  // Not a literal: those who bundle for browsers look for it in vain.
  const files = "node:fs/promises";
  return (await import(/* webpackIgnore: true */ /* @vite-ignore */ files)).readFile(url);
}

/** Returns: the module of a source as `load` takes it. */
export async function compile(source) {
  const given = await source;
  if (given instanceof WebAssembly.Module) return given;
  const isResponse = typeof Response !== "undefined" && given instanceof Response;
  return WebAssembly.compile(isResponse ? await bytesOfResponse(given) : given);
}

/** What the runtime asks a system for is to print its last words, and to end: both come as a trap anyway. */
function importsOf(module) {
  const imports = {};
  for (const { module: from, name } of WebAssembly.Module.imports(module))
    (imports[from] ??= {})[name] = () => 0;
  return imports;
}

/** An instance and its scratch memory. Pointers and sizes are numbers from 0 to 2^32 - 1. */
export class Library {
  #exports;
  #scratch;

  static async of(module) {
    return new Library(await WebAssembly.instantiate(module, importsOf(module)));
  }
  constructor(instance) {
    this.#exports = instance.exports;
    this.call("_initialize");
    this.#scratch = this.allocate(place.end);
  }

  call(name, ...values) {
    return this.#exports[name](...values);
  }

  // The memory moves when it grows: views are valid until the next call.
  bytes(pointer, count) {
    return new Uint8Array(this.#exports.memory.buffer, pointer, count);
  }
  /** Returns: whether an array is a view of the memory. */
  owns(array) {
    return array.buffer === this.#exports.memory.buffer;
  }
  #words(pointer, bytes) {
    return new Uint32Array(this.#exports.memory.buffer, pointer, bytes / 4);
  }

  /** Throws: TeskError without memory. A size that 32 bits cannot hold would wrap in the call. */
  allocate(bytes) {
    const pointer = bytes < 2 ** 32 ? this.call("malloc", Math.max(bytes, 1)) >>> 0 : 0;
    if (pointer === 0) throw this.error(status.outOfMemory);
    return pointer;
  }
  /** Returns: a larger block that begins like the old one, which is gone. Throws: as allocate; the old one stays. */
  grow(pointer, bytes) {
    const grown = bytes < 2 ** 32 ? this.call("realloc", pointer, bytes) >>> 0 : 0;
    if (grown === 0) throw this.error(status.outOfMemory);
    return grown;
  }
  free(pointer) {
    this.call("free", pointer);
  }

  /** Returns: a codec with flags of tesk_options. Throws: TeskError. */
  makeCodec(flags) {
    const options = this.#words(this.#scratch + place.options, optionsBytes);
    options.fill(0);
    options[0] = optionsBytes;
    options[6] = flags;
    // It keeps no memory between calls: what it gives back stays in this instance anyway.
    const made = this.call("tesk_create", this.#scratch + place.options, this.number);
    if (made !== status.ok) throw this.error(made);
    return this.readNumber();
  }

  /** Where calls put a number or a pointer. */
  get number() {
    return this.#scratch + place.number;
  }
  readNumber() {
    return this.#words(this.number, 4)[0];
  }

  /** Returns: a pointer to a tesk_image with these numbers. */
  image({ width = 0, height = 0, bytesPerPixel = 0, bitsPerSample = 0 } = {}) {
    const image = this.#words(this.#scratch + place.image, imageBytes);
    image.set([imageBytes, width, height, bytesPerPixel, bitsPerSample]);
    return this.#scratch + place.image;
  }
  readImage() {
    const image = this.#words(this.#scratch + place.image, imageBytes);
    const [, width, height, bytesPerPixel, bitsPerSample] = image;
    return { width, height, bytesPerPixel, bitsPerSample };
  }

  /** Returns: a pointer to a tesk_result. */
  result() {
    const result = this.#words(this.#scratch + place.result, resultBytes);
    result[0] = resultBytes;
    return this.#scratch + place.result;
  }
  readResult() {
    const [, streamBytes, , loss] = this.#words(this.#scratch + place.result, resultBytes);
    return { streamBytes, loss };
  }

  #text(pointer) {
    const rest = new Uint8Array(this.#exports.memory.buffer, pointer >>> 0, 200);
    return new TextDecoder().decode(rest.slice(0, rest.indexOf(0)));
  }
  /** Returns: an error in the library's own words. */
  error(number, more = "") {
    return new TeskError(this.#text(this.call("tesk_status_message", number)) + more, number);
  }
  lossMessage(loss) {
    return this.#text(this.call("tesk_loss_message", loss));
  }
}
