// Window and level of gray pictures, above a histogram.

import { byId } from "./elements.mjs";


export class WindowControl {
  #changed;
  #most = 255;
  #histogram = null;
  /** What is black, and what is white, in whole numbers; of a drag the parts count, too. */
  range = [0, 255];
  #exact = [0, 255];

  /** `changed` is called when the user has chosen another window. */
  constructor(changed) {
    this.#changed = changed;
    byId("low").addEventListener("input", () => this.#set(Number(byId("low").value), this.range[1]));
    byId("high").addEventListener("input", () => this.#set(this.range[0], Number(byId("high").value)));
    byId("auto").addEventListener("click", () => this.auto());
    byId("full").addEventListener("click", () => this.all());
  }

  /** Begins with all values that samples of so many bits may have. Colours have no window here. */
  open(bits, isGray) {
    byId("window").hidden = !isGray;
    this.#most = 2 ** bits - 1;
    this.#histogram = null;
    byId("low").max = byId("high").max = this.#most;
    this.#put([0, this.#most]);
  }

  /** The window that the histogram suggests. */
  auto() {
    if (this.#histogram !== null) this.#set(...this.#histogram.window);
  }
  all() {
    this.#set(0, this.#most);
  }

  /** The window moves with a drag up and down, and grows with one to the right. Way: parts of the stage. */
  drag({ x, y }) {
    const [low, high] = this.#exact;
    const level = (y * this.#most) / 2;
    const growth = (x * this.#most) / 2;
    this.#set(low + level - growth, high + level + growth);
  }

  #set(low, high) {
    const least = Math.min(Math.max(low, 0), this.#most - 1);
    this.#put([least, Math.min(Math.max(high, least + 1), this.#most)]);
    this.#changed();
  }
  #put(range) {
    this.#exact = range;
    this.range = range.map(Math.round);
    [byId("low").value, byId("high").value] = this.range;
    [byId("lowValue").value, byId("highValue").value] = this.range;
    this.#draw();
  }

  /** Takes the histogram of the picture that is shown. */
  show(histogram) {
    this.#histogram = histogram;
    this.#draw();
  }

  /** Heights are square roots: few samples are seen, too. */
  #draw() {
    const canvas = byId("histogram");
    const context = canvas.getContext("2d");
    const { width, height } = canvas;
    const style = getComputedStyle(canvas);
    context.clearRect(0, 0, width, height);
    context.fillStyle = style.borderTopColor;
    const [low, high] = this.range.map((value) => (value / this.#most) * width);
    context.fillRect(low, 0, Math.max(high - low, 1), height);
    if (this.#histogram === null) return;
    const { bins } = this.#histogram;
    context.fillStyle = style.color;
    const tallest = Math.sqrt(Math.max(...bins));
    const barWidth = width / bins.length;
    bins.forEach((count, i) => {
      const bar = (Math.sqrt(count) / tallest) * height;
      context.fillRect(i * barWidth, height - bar, Math.ceil(barWidth), bar);
    });
  }
}
