// A canvas that shows a picture through a view.

/** A part of the picture, at the reduction at which it was painted. */
class Tile {
  #canvas = document.createElement("canvas");

  constructor({ rgba, part, reduce }) {
    this.part = part;
    this.reduce = reduce;
    this.#canvas.width = part.width;
    this.#canvas.height = part.height;
    this.#canvas.getContext("2d").putImageData(new ImageData(rgba, part.width, part.height), 0, 0);
  }

  draw(context, view) {
    const corner = view.corner();
    const step = 2 ** this.reduce;
    const scale = view.scale * step;
    // Pixels of a complete picture that are seen one by one stay sharp; small pictures are scaled up softly.
    context.imageSmoothingEnabled = this.reduce > 0 || (scale !== 1 && scale < 2);
    context.imageSmoothingQuality = "high";
    const { x, y, width, height } = this.part;
    context.drawImage(
      this.#canvas, corner.x + x * view.scale, corner.y + y * view.scale, width * scale, height * scale);
  }
}

export class Stage {
  #canvas;
  #view;
  #tiles = { whole: null, region: null };
  #isDrawing = false;

  /** `resized` is called when the canvas has another size. Several stages may share a view. */
  constructor(canvas, view, resized = () => {}) {
    this.#canvas = canvas;
    this.#view = view;
    new ResizeObserver(() => {
      canvas.width = Math.max(Math.round(canvas.clientWidth * devicePixelRatio), 1);
      canvas.height = Math.max(Math.round(canvas.clientHeight * devicePixelRatio), 1);
      resized({ width: canvas.width, height: canvas.height });
      this.draw();
    }).observe(canvas);
  }

  clear() {
    this.#tiles = { whole: null, region: null };
    this.draw();
  }

  /** Shows what the worker painted. A picture of the whole image stays behind the regions. */
  show(painted) {
    const { width, height } = this.#view.image;
    const tile = new Tile(painted);
    const step = 2 ** painted.reduce;
    const isWhole = tile.part.width >= width / step && tile.part.height >= height / step;
    if (isWhole) this.#tiles = { whole: tile, region: null };
    else this.#tiles.region = tile;
    this.draw();
  }

  /** Shows anything that drawImage takes, as large as the image. */
  showImage(source) {
    const { width, height } = this.#view.image;
    const draw = (context, view) => {
      const corner = view.corner();
      context.imageSmoothingEnabled = view.scale !== 1 && view.scale < 2;
      context.imageSmoothingQuality = "high";
      context.drawImage(source, corner.x, corner.y, width * view.scale, height * view.scale);
    };
    this.#tiles = { whole: { draw }, region: null };
    this.draw();
  }

  /** At most once a frame. */
  draw() {
    if (this.#isDrawing) return;
    this.#isDrawing = true;
    requestAnimationFrame(() => {
      this.#isDrawing = false;
      const context = this.#canvas.getContext("2d");
      context.clearRect(0, 0, this.#canvas.width, this.#canvas.height);
      this.#tiles.whole?.draw(context, this.#view);
      this.#tiles.region?.draw(context, this.#view);
    });
  }
}
