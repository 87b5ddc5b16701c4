// All that the page knows of one source from its opening on. Another opening makes another one.

import { Arrival } from "./arrival.mjs";

export class Showing {
  info = null;
  /** Bytes that have come, and bytes of all of it as far as somebody knows. */
  arrived = 0;
  total = null;
  /** What the worker said when no more came: bytes of the stream, and whether it is complete. */
  end = null;
  hasFailed = false;
  /** The bytes to show; null: all that have come. */
  chosen = null;
  /** The bytes whose distance from the end is shown, or asked for. */
  compared = null;

  constructor(source, speed) {
    this.source = source;
    this.arrival = new Arrival(speed);
  }
  get shownBytes() {
    return this.chosen ?? this.arrived;
  }
  get isOver() {
    return this.end !== null || this.hasFailed;
  }
  /** Bytes of the complete stream, or null: a stream that ends early does not say how long it was. */
  get completeBytes() {
    return this.end?.complete === false ? null : this.total;
  }
}
