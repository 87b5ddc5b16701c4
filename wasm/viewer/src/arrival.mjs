// Bytes that arrive at a speed which can be changed, and held.

const tick = 50;
/** Time that passed while nobody asked counts up to so many milliseconds: work of the worker, but no sleep of the machine. */
const longest = 5000;

const sleep = (milliseconds) => new Promise((wake) => setTimeout(wake, milliseconds));

export class Arrival {
  /** Bytes a second, in the way of a network: evenly. Infinity: as they come. */
  speed;
  isHeld = false;
  #isCancelled = false;
  #isFinished = false;
  #request = new AbortController();
  #reader = null;
  #allowed = 0;
  #then = performance.now();

  constructor(speed) {
    this.speed = speed;
  }

  /** Ends requests of this arrival when it is cancelled. */
  get signal() {
    return this.#request.signal;
  }

  /** Ends run without another chunk. */
  cancel() {
    this.#isCancelled = true;
    this.#end();
  }
  /** Ends run as if no more came. */
  finish() {
    this.#isFinished = true;
    this.#end();
  }
  #end() {
    this.#reader?.cancel().catch(() => {});
    this.#request.abort();
  }

  /**
   * Gives a stream of chunks to `take`, in parts if the speed asks for them, one after the other. Returns: whether
   * it came to its end. Throws: what reading and taking throw.
   */
  async run(stream, take) {
    this.#reader = stream.getReader();
    try {
      await this.#read(take);
    } catch (error) {
      // Who ends a request is told that it failed.
      if (!this.#isOver) throw error;
    } finally {
      this.#reader.cancel().catch(() => {});
    }
    return !this.#isCancelled;
  }
  async #read(take) {
    while (!this.#isOver) {
      const { done, value } = await this.#reader.read();
      if (done) return;
      for (let rest = value; rest.length > 0 && !this.#isOver; ) {
        const room = await this.#room();
        const part = rest.subarray(0, room);
        rest = rest.subarray(room);
        this.#allowed -= part.length;
        if (!this.#isOver) await take(part);
      }
    }
  }
  get #isOver() {
    return this.#isCancelled || this.#isFinished;
  }

  /** Returns: how many bytes may pass now, once it is one or more. */
  async #room() {
    for (;;) {
      this.#count();
      if (this.#isOver || (this.speed === Infinity && !this.isHeld)) {
        this.#allowed = 0;
        return Infinity;
      }
      if (this.#allowed >= 1 && !this.isHeld) return Math.floor(this.#allowed);
      await sleep(tick);
    }
  }
  #count() {
    const now = performance.now();
    const passed = Math.min(now - this.#then, longest);
    this.#then = now;
    if (!this.isHeld && this.speed !== Infinity) this.#allowed += (this.speed * passed) / 1000;
  }
}
