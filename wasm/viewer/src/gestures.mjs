// What moves and zooms a view: pointers and the wheel on a canvas, keys on the whole page.

const arrows = { ArrowLeft: [1, 0], ArrowRight: [-1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] };
const arrowPixels = 80;
const keyZoom = 1.25;

export class Gestures {
  #canvas;
  #view;
  #changed;
  #windowed;
  /** Pointers that are down: the id of each, and where it was last. */
  #pointers = new Map();

  /** `changed` is called when the view has; `windowed` with the way of a drag that is about the window. */
  constructor(canvas, view, changed, windowed) {
    this.#canvas = canvas;
    this.#view = view;
    this.#changed = changed;
    this.#windowed = windowed;
    canvas.addEventListener("pointerdown", (event) => this.#down(event));
    canvas.addEventListener("pointermove", (event) => this.#move(event));
    for (const name of ["pointerup", "pointercancel"])
      canvas.addEventListener(name, (event) => this.#pointers.delete(event.pointerId));
    canvas.addEventListener("wheel", (event) => this.#wheel(event), { passive: false });
    canvas.addEventListener("dblclick", (event) => this.#zoom(2, this.#at(event)));
  }

  #at({ offsetX, offsetY }) {
    return { x: offsetX * devicePixelRatio, y: offsetY * devicePixelRatio };
  }
  #zoom(factor, anchor) {
    this.#view.zoomBy(factor, anchor);
    this.#changed();
  }

  #down(event) {
    this.#canvas.setPointerCapture(event.pointerId);
    this.#pointers.set(event.pointerId, this.#at(event));
  }
  #move(event) {
    const before = this.#pointers.get(event.pointerId);
    if (before === undefined) return;
    const now = this.#at(event);
    this.#pointers.set(event.pointerId, now);
    const way = { x: now.x - before.x, y: now.y - before.y };
    if (this.#pointers.size === 2) this.#pinch(event.pointerId, before, now);
    else if (event.shiftKey) return this.#windowed(way);
    else this.#view.pan(way.x, way.y);
    this.#changed();
  }

  /** The other finger stays where it is; both move the picture by half of the way. */
  #pinch(id, before, now) {
    const [other] = [...this.#pointers].filter(([key]) => key !== id).map(([, at]) => at);
    const span = (at) => Math.max(Math.hypot(at.x - other.x, at.y - other.y), 1);
    this.#view.zoomBy(span(now) / span(before), { x: (now.x + other.x) / 2, y: (now.y + other.y) / 2 });
    this.#view.pan((now.x - before.x) / 2, (now.y - before.y) / 2);
  }

  #wheel(event) {
    event.preventDefault();
    const lines = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 30 : 1;
    this.#zoom(2 ** (-event.deltaY * lines * 0.002), this.#at(event));
  }
}

/** Returns: whether it was a key that does something to a view. */
export function moveByKey(view, key) {
  if (key in arrows) view.pan(...arrows[key].map((way) => way * arrowPixels));
  else if (key === "+" || key === "=") view.zoomBy(keyZoom);
  else if (key === "-") view.zoomBy(1 / keyZoom);
  else if (key === "0") view.fit();
  else if (key === "1") view.zoomTo(1);
  else return false;
  return true;
}
