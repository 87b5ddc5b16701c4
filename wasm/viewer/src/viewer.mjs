// A stream on its way to the screen.

import { ByteSlider } from "./byteslider.mjs";
import { byId } from "./elements.mjs";
import { bytesText, distanceText, percentText, ratioText } from "./figures.mjs";
import { depthOf, isGray, rawBytesOf } from "./geometry.mjs";
import { Gestures, moveByKey } from "./gestures.mjs";
import * as labels from "./labels.mjs";
import { Painter } from "./painter.mjs";
import { Sequential } from "./sequential.mjs";
import { Showing } from "./showing.mjs";
import { Stage } from "./stage.mjs";
import { View } from "./view.mjs";
import { WindowControl } from "./window.mjs";

/** The comparison with the end takes a full picture: not for each step of a drag. */
const idle = 150;

export class Viewer {
  #desk;
  #view = new View();
  #stage;
  #sequential;
  #slider;
  #painter;
  #window;
  #timer = null;
  #showing = null;

  constructor(desk) {
    this.#desk = desk;
    this.#stage = new Stage(byId("picture"), this.#view, (size) => {
      this.#view.resize(size);
      this.#viewChanged();
    });
    this.#sequential = new Sequential(new Stage(byId("other"), this.#view));
    this.#painter = new Painter(desk, (painted, error, wish) => this.#painted(painted, error, wish));
    this.#slider = new ByteSlider((bytes, isAll) => this.#choose(isAll ? null : bytes));
    this.#window = new WindowControl(() => this.#paint());
    const drag = (way) => this.#dragWindow(way);
    for (const id of ["picture", "other"]) new Gestures(byId(id), this.#view, () => this.#viewChanged(), drag);
  }

  /**
   * Shows a source from its first byte at the speed that is chosen. Returns: whether all of it is shown, and not
   * another one by now. Throws: Error that says what is wrong.
   */
  async open(source, speed) {
    this.#showing?.arrival.cancel();
    const showing = new Showing(source, speed);
    this.#showing = showing;
    this.#begin();
    try {
      return await this.#arrive(showing);
    } catch (error) {
      if (showing !== this.#showing) return false;
      this.#fail();
      throw error.message.includes(source.name) ? error : new Error(`${source.name}: ${error.message}`);
    }
  }

  #begin() {
    clearTimeout(this.#timer);
    this.#painter.reset();
    this.#stage.clear();
    byId("sequential").hidden = byId("window").hidden = byId("save").hidden = true;
    labels.clear(this.#showing.source.name);
    labels.playButton("arriving");
  }

  async #arrive(showing) {
    const { source, arrival } = showing;
    const [{ stream, total }] = await Promise.all([source.open(arrival.signal), this.#desk.ask("reset")]);
    if (showing !== this.#showing) return false;
    showing.total = total;
    this.#slider.open(total);
    this.#openSequential(showing).catch(() => {});
    const isThere = await arrival.run(stream, (part) => this.#take(part, showing));
    return isThere && this.#ended(showing);
  }

  /** Without the other file the picture is shown alone. */
  async #openSequential(showing) {
    const file = await showing.source.sequential?.();
    if (!file || showing !== this.#showing) return;
    this.#sequential.open(file);
    byId("sequential").hidden = false;
    this.#showSequential(showing.shownBytes);
  }
  #showSequential(bytes) {
    if (byId("sequential").hidden) return;
    labels.sequentialCaption(this.#sequential.sizeBytes, bytes);
    this.#sequential.show(bytes);
  }

  async #take(part, showing) {
    const chunk = part.slice();
    const bytes = chunk.length;
    const info = await this.#desk.ask("push", { chunk }, [chunk.buffer]);
    if (showing !== this.#showing) return;
    showing.arrived += bytes;
    this.#slider.arrived(showing.arrived, showing.shownBytes);
    if (info === null) return;
    if (showing.info === null) this.#know(info);
    if (showing.chosen === null) this.#painter.arrived(showing.arrived, () => this.#wish());
  }

  #know(info) {
    if (info.width * info.height === 0) throw new Error(`an image of ${info.width} × ${info.height} has no pixels`);
    const showing = this.#showing;
    showing.info = info;
    this.#view.show(info);
    this.#window.open(depthOf(info), isGray(info));
    labels.caption(showing.source.name, info);
    labels.show(true);
    labels.zoom(this.#view.scale);
    labels.say(`${showing.source.name} is arriving`);
  }

  /** Returns: whether this is still shown. */
  async #ended(showing) {
    const end = await this.#desk.ask("end");
    if (showing !== this.#showing) return false;
    const surplus = Math.max(showing.total ?? 0, showing.arrived) - end.bytes;
    showing.end = end;
    showing.total = showing.arrived = end.bytes;
    if (showing.chosen >= end.bytes) showing.chosen = null;
    this.#slider.open(end.bytes);
    this.#slider.arrived(end.bytes, showing.shownBytes);
    labels.playButton("over");
    this.#sayEnd(showing, surplus);
    this.#paint();
    return true;
  }

  #sayEnd({ info, end }, surplus) {
    const raw = rawBytesOf(info);
    const size = `${bytesText(end.bytes)} bytes, ${ratioText(end.bytes, raw)} of ${bytesText(raw)} raw bytes`;
    const trailer = surplus > 0 ? ` ${bytesText(surplus)} bytes behind the stream are not part of it.` : "";
    labels.say(end.complete ? `Complete: ${size}. Every bit of the image is there.${trailer}`
      : `The stream ends early, after ${bytesText(end.bytes)} bytes: this is an approximation.`);
    byId("save").hidden = false;
  }

  #choose(bytes) {
    if (!this.#showing?.info) return;
    this.#showing.chosen = bytes;
    this.#paint();
  }

  #wish() {
    const { info, shownBytes } = this.#showing;
    return {
      bytes: shownBytes,
      region: this.#view.region(),
      reduction: this.#view.reduction(),
      window: isGray(info) ? this.#window.range : undefined,
    };
  }
  #paint() {
    if (this.#showing?.info) this.#painter.now(this.#wish());
  }
  #viewChanged() {
    labels.zoom(this.#view.scale);
    this.#stage.draw();
    this.#sequential.draw();
    this.#paint();
  }

  #painted(painted, error, { bytes }) {
    const showing = this.#showing;
    if (!showing.info) return;
    if (error !== null) {
      this.#fail();
      labels.say(`${showing.source.name}: ${error.message}`, true);
      return;
    }
    this.#stage.show(painted);
    if (painted.histogram) this.#window.show(painted.histogram);
    labels.figures({ ...painted, bytes }, showing.info, showing.completeBytes);
    const all = showing.completeBytes;
    labels.pictureLabel(showing.source.name, showing.info, all === null ? "some" : percentText(bytes, all));
    this.#showSequential(bytes);
    // What comes behind a complete stream is something else.
    if (painted.complete) showing.arrival.finish();
    this.#compareSoon(bytes, showing);
  }

  /** Nothing more comes of this source. */
  #fail() {
    this.#showing.hasFailed = true;
    this.#showing.arrival.cancel();
    labels.playButton("over");
    if (this.#showing.info !== null) return;
    labels.show(false);
    byId("window").hidden = true;
  }

  #compareSoon(bytes, showing) {
    if (showing.end === null || bytes === showing.compared) return;
    showing.compared = bytes;
    clearTimeout(this.#timer);
    if (!showing.end.complete) return labels.distance("not known: it ends early");
    labels.distance("…");
    this.#timer = setTimeout(() => this.#compare(bytes, showing), idle);
  }
  async #compare(bytes, showing) {
    const words = await this.#desk.ask("distance", { bytes }).then(distanceText, () => "not computed");
    if (showing === this.#showing && bytes === showing.compared) labels.distance(words);
  }

  #dragWindow({ x, y }) {
    const { width, height } = this.#view.stage;
    if (this.#hasWindow()) this.#window.drag({ x: x / width, y: y / height });
  }
  autoWindow() {
    if (this.#hasWindow()) this.#window.auto();
  }
  allValues() {
    if (this.#hasWindow()) this.#window.all();
  }
  #hasWindow() {
    return this.#showing?.info && isGray(this.#showing.info);
  }

  setSpeed(speed) {
    if (this.#showing !== null) this.#showing.arrival.speed = speed;
  }
  /** Holds what arrives, lets it go on, or shows the source once more. */
  async play(speed) {
    if (this.#showing === null) return;
    const { source, arrival, isOver } = this.#showing;
    if (isOver) return void (await this.open(source, speed));
    arrival.isHeld = !arrival.isHeld;
    labels.playButton(arrival.isHeld ? "held" : "arriving");
  }

  step(count) {
    this.#slider.step(count);
  }
  /** Returns: whether it was a key that moves or zooms the picture. */
  press(key) {
    if (!moveByKey(this.#view, key)) return false;
    this.#viewChanged();
    return true;
  }
  /** Returns: name and bytes of the stream that is shown. */
  async savedStream() {
    const { name } = this.#showing.source;
    return { name, file: new Blob([await this.#desk.ask("stream")]) };
  }
}
