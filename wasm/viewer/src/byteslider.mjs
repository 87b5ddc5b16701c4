// The slider of bytes, and above it how far they have come.

import { bytesAt, positionOf, steps, ticksOf } from "./bytescale.mjs";
import { bytesText, percentText } from "./figures.mjs";

export class ByteSlider {
  #input = document.getElementById("bytes");
  #progress = document.getElementById("arrived");
  #ticks = document.getElementById("ticks");
  #total = 0;
  /** Else the total is what has come. */
  #isTotalKnown = false;
  #arrived = 0;

  /** `chosen` takes the bytes that the user chose; those that have come, when that is all of them. */
  constructor(chosen) {
    this.#input.max = steps;
    this.#input.addEventListener("input", () => {
      const wanted = bytesAt(Number(this.#input.value), this.#total);
      const bytes = Math.min(wanted, this.#arrived);
      // Else it stays where it was put, also where its steps are less than a byte.
      if (bytes < wanted) this.#put(bytes);
      this.#say(bytes);
      chosen(bytes, bytes === this.#arrived);
    });
  }

  /** Total: bytes of the file, as far as somebody knows. */
  open(total) {
    this.#total = total ?? 0;
    this.#isTotalKnown = total !== null;
    this.#arrived = 0;
    this.#put(0);
    this.#ticks.replaceChildren(...ticksOf(this.#total).map(({ text, position }) => {
      const tick = document.createElement("li");
      tick.textContent = text;
      tick.style.left = `${100 * position}%`;
      return tick;
    }));
  }

  /** Shows how many bytes have come, and how many of them are shown. */
  arrived(bytes, shown) {
    this.#arrived = bytes;
    if (bytes > this.#total) this.#total = bytes;
    if (this.#isTotalKnown) this.#progress.value = positionOf(bytes, this.#total) / steps;
    else this.#progress.removeAttribute("value");
    if (bytes === shown || !this.#isTotalKnown) this.#put(shown);
  }
  step(count) {
    this.#input.value = Number(this.#input.value) + count;
    this.#input.dispatchEvent(new Event("input"));
  }
  #put(bytes) {
    this.#input.value = Math.ceil(positionOf(bytes, this.#total));
    this.#say(bytes);
  }
  #say(bytes) {
    const part = this.#isTotalKnown && this.#total > 0 ? `, ${percentText(bytes, this.#total)}` : "";
    this.#input.setAttribute("aria-valuetext", `${bytesText(bytes)} bytes${part}`);
  }
}
