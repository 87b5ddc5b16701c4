// When pictures are painted. One at a time; while bytes arrive, when a quarter more has come than the picture
// has, and at most half of the time: else a large image would be decoded all the time.

const growth = 1.25;

export class Painter {
  #desk;
  #painted;
  /** What is to be painted next; the newest wish wins. */
  #wish = null;
  #isBusy = false;
  #bytes = 0;
  #restsUntil = 0;
  #timer = null;

  /** `painted` takes what the worker answers to "paint", or an error. */
  constructor(desk, painted) {
    this.#desk = desk;
    this.#painted = painted;
  }

  reset() {
    this.#wish = null;
    this.#bytes = 0;
    clearTimeout(this.#timer);
  }

  /** Paints as soon as the worker is free. */
  now(wish) {
    clearTimeout(this.#timer);
    this.#wish = wish;
    this.#go();
  }

  /** Paints if that is worth it: `wish` says what, when it comes to it. */
  arrived(bytes, wish) {
    if (bytes < growth * this.#bytes) return;
    clearTimeout(this.#timer);
    const wait = this.#isBusy ? 20 : this.#restsUntil - performance.now();
    if (wait > 0) this.#timer = setTimeout(() => this.arrived(bytes, wish), wait);
    else this.now(wish());
  }

  async #go() {
    if (this.#isBusy || this.#wish === null) return;
    const wish = this.#wish;
    this.#wish = null;
    this.#isBusy = true;
    // Not when the answer is there: it may be about a stream of before.
    this.#bytes = wish.bytes;
    const begin = performance.now();
    try {
      const answer = await this.#desk.ask("paint", wish);
      this.#painted(answer, null, wish);
    } catch (error) {
      this.#painted(null, error, wish);
    }
    const end = performance.now();
    this.#restsUntil = end + (end - begin);
    this.#isBusy = false;
    this.#go();
  }
}
