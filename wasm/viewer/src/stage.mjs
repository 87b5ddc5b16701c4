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
    const left = corner.x + x * view.scale;
    const top = corner.y + y * view.scale;
    context.save();
    context.beginPath();
    context.rect(corner.x, corner.y, view.image.width * view.scale, view.image.height * view.scale);
    context.clip();
    // Sample k of a reduced picture belongs to pixel k * step, not to the middle of a block. Drawn first where it
    // leaves no gap at the right and lower edges.
    const shift = ((step - 1) / 2) * view.scale;
    for (const back of shift > 0 ? [0, shift] : [0])
      context.drawImage(this.#canvas, left - back, top - back, width * scale, height * scale);
    context.restore();
  }
}

/** Returns: width and height in pixels of the device; a browser that does not tell rounds them itself. */
function deviceSizeOf({ devicePixelContentBoxSize, contentRect }) {
  const [box] = devicePixelContentBoxSize ?? [];
  const width = box?.inlineSize ?? Math.round(contentRect.width * devicePixelRatio);
  const height = box?.blockSize ?? Math.round(contentRect.height * devicePixelRatio);
  return { width: Math.max(width, 1), height: Math.max(height, 1) };
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
    const observer = new ResizeObserver(([entry]) => {
      Object.assign(canvas, deviceSizeOf(entry));
      resized({ width: canvas.width, height: canvas.height });
      this.draw();
    });
    try {
      observer.observe(canvas, { box: "device-pixel-content-box" });
    } catch {
      observer.observe(canvas);
    }
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
