// Bytes that arrive at a speed which can be changed, and held.

const tick = 50;

const sleep = (milliseconds) => new Promise((wake) => setTimeout(wake, milliseconds));

export class Arrival {
  /** Bytes a second, in the way of a network: evenly. Infinity: as they come. */
  speed;
  isHeld = false;
  #isOver = false;
  #allowed = 0;
  #then = performance.now();

  constructor(speed) {
    this.speed = speed;
  }

  /** Ends run without another chunk. */
  cancel() {
    this.#isOver = true;
  }

  /**
   * Gives a stream of chunks to `take`, in parts if the speed asks for them. Returns: whether it came to its end.
   * Throws: what reading throws.
   */
  async run(stream, take) {
    const reader = stream.getReader();
    try {
      for (;;) {
        const { done, value } = await reader.read();
        if (done) return !this.#isOver;
        for (let rest = value; rest.length > 0; ) {
          const room = await this.#room();
          if (this.#isOver) return false;
          const part = rest.subarray(0, room);
          rest = rest.subarray(room);
          this.#allowed -= part.length;
          take(part);
        }
      }
    } finally {
      reader.cancel().catch(() => {});
    }
  }

  /** Returns: how many bytes may pass now, once it is one or more. */
  async #room() {
    for (;;) {
      const now = performance.now();
      const isFree = this.speed === Infinity;
      // Time that was spent decoding counts, but for long pauses of the page.
      if (!this.isHeld && !isFree) this.#allowed += (this.speed * Math.min(now - this.#then, 500)) / 1000;
      this.#then = now;
      if (this.#isOver || (isFree && !this.isHeld)) {
        this.#allowed = 0;
        return Infinity;
      }
      if (this.#allowed >= 1 && !this.isHeld) return Math.floor(this.#allowed);
      await sleep(tick);
    }
  }
}
