// A file that is stored row by row, as the browser shows the same number of its bytes.

/** Returns: the picture that the browser makes of a part of a file; null where it makes none. */
async function imageOf(part) {
  const address = URL.createObjectURL(part);
  const image = new Image();
  const isLoaded = new Promise((resolve) => {
    image.onload = () => resolve(true);
    image.onerror = () => resolve(false);
  });
  image.src = address;
  const found = await isLoaded;
  URL.revokeObjectURL(address);
  return found ? image : null;
}

export class Sequential {
  #stage;
  #file = null;
  #wish = null;
  #isBusy = false;

  constructor(stage) {
    this.#stage = stage;
  }
  get sizeBytes() {
    return this.#file.size;
  }

  draw() {
    this.#stage.draw();
  }

  open(file) {
    this.#file = file;
    this.#stage.clear();
  }

  /** Shows so many bytes; while it is at it, the newest wish waits. */
  async show(bytes) {
    this.#wish = bytes;
    if (this.#isBusy) return;
    this.#isBusy = true;
    while (this.#wish !== null) {
      const file = this.#file;
      const part = file.slice(0, this.#wish, file.type);
      this.#wish = null;
      const image = await imageOf(part);
      if (file !== this.#file) continue;
      if (image === null) this.#stage.clear();
      else this.#stage.showImage(image);
    }
    this.#isBusy = false;
  }
}
