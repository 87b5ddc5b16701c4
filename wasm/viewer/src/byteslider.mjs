// The slider of bytes, and above it how far they have come.

import { bytesAt, positionOf, steps, ticksOf } from "./bytescale.mjs";
import { bytesText, percentText } from "./figures.mjs";

export class ByteSlider {
  #input = document.getElementById("bytes");
  #progress = document.getElementById("arrived");
  #ticks = document.getElementById("ticks");
  #total = 0;
  #arrived = 0;

  /** `chosen` takes the bytes that the user chose; those that have come, when that is all of them. */
  constructor(chosen) {
    this.#input.max = steps;
    this.#input.addEventListener("input", () => {
      const bytes = Math.min(bytesAt(Number(this.#input.value), this.#total), this.#arrived);
      this.#put(bytes);
      chosen(bytes, bytes === this.#arrived);
    });
  }

  /** Total: bytes of the file, as far as somebody knows. */
  open(total) {
    this.#total = total ?? 0;
    this.#arrived = 0;
    this.#put(0);
    this.#ticks.replaceChildren(...ticksOf(this.#total).map(({ text, position }) => {
      const tick = document.createElement("li");
      tick.textContent = text;
      tick.style.left = `${100 * position}%`;
      return tick;
    }));
  }

  arrived(bytes) {
    this.#arrived = bytes;
    if (bytes > this.#total) this.#total = bytes;
    this.#progress.value = positionOf(bytes, this.#total) / steps;
  }

  show(bytes) {
    this.#put(bytes);
  }
  step(count) {
    this.#input.value = Number(this.#input.value) + count;
    this.#input.dispatchEvent(new Event("input"));
  }
  #put(bytes) {
    this.#input.value = Math.ceil(positionOf(bytes, this.#total));
    this.#input.setAttribute("aria-valuetext", `${bytesText(bytes)} bytes, ${percentText(bytes, this.#total || 1)}`);
  }
}
