// Where an image stands on a stage: zoom and pan. Stage lengths are pixels of the device, image lengths its own.

const closest = 64;
const largestFit = 8;

const within = (value, least, most) => Math.min(Math.max(value, least), most);

export class View {
  image = { width: 1, height: 1 };
  stage = { width: 1, height: 1 };
  /** Device pixels for a pixel of the image. */
  scale = 1;
  /** The point of the image in the middle of the stage. */
  middle = { x: 0.5, y: 0.5 };
  /** Whether the whole image stays in view when the stage changes. */
  isFitted = true;

  show(image) {
    this.image = image;
    this.fit();
  }
  resize(stage) {
    this.stage = stage;
    if (this.isFitted) this.fit();
    else this.#keepInside();
  }

  /** Small images are enlarged by a whole number: their pixels stay equally large. */
  #fittingScale() {
    const scale = Math.min(this.stage.width / this.image.width, this.stage.height / this.image.height);
    return scale > 1 ? Math.min(Math.floor(scale), largestFit) : scale;
  }
  fit() {
    this.scale = this.#fittingScale();
    this.middle = { x: this.image.width / 2, y: this.image.height / 2 };
    this.isFitted = true;
  }

  /** The point of the image under the anchor stays there; without one, that in the middle. */
  zoomTo(scale, anchor = { x: this.stage.width / 2, y: this.stage.height / 2 }) {
    const before = this.pointAt(anchor);
    this.scale = within(scale, Math.min(this.#fittingScale(), 1), closest);
    const after = this.pointAt(anchor);
    this.middle = { x: this.middle.x + before.x - after.x, y: this.middle.y + before.y - after.y };
    this.isFitted = false;
    this.#keepInside();
  }
  zoomBy(factor, anchor) {
    this.zoomTo(this.scale * factor, anchor);
  }
  pan(dx, dy) {
    this.middle = { x: this.middle.x - dx / this.scale, y: this.middle.y - dy / this.scale };
    this.isFitted = false;
    this.#keepInside();
  }

  #keepInside() {
    const inside = (at, image, stage) => {
      const half = stage / this.scale / 2;
      return image <= 2 * half ? image / 2 : within(at, half, image - half);
    };
    this.middle = {
      x: inside(this.middle.x, this.image.width, this.stage.width),
      y: inside(this.middle.y, this.image.height, this.stage.height),
    };
  }

  pointAt({ x, y }) {
    return {
      x: this.middle.x + (x - this.stage.width / 2) / this.scale,
      y: this.middle.y + (y - this.stage.height / 2) / this.scale,
    };
  }

  /** Returns: where the image's upper left corner stands, on a whole pixel. */
  corner() {
    return {
      x: Math.round(this.stage.width / 2 - this.middle.x * this.scale),
      y: Math.round(this.stage.height / 2 - this.middle.y * this.scale),
    };
  }

  /** Returns: the part of the image that is in view, and a margin around it, in whole pixels. */
  region() {
    const side = (middle, image, stage) => {
      const half = (0.75 * stage) / this.scale;
      const first = Math.floor(within(middle - half, 0, image));
      return [first, Math.ceil(within(middle + half, 0, image)) - first];
    };
    const [x, width] = side(this.middle.x, this.image.width, this.stage.width);
    const [y, height] = side(this.middle.y, this.image.height, this.stage.height);
    return { x, y, width, height };
  }

  /** Returns: how often an image can be halved and still has a pixel for each pixel of the device. */
  reduction() {
    return Math.max(0, Math.floor(-Math.log2(this.scale) + 1e-6));
  }
}
