// A stream on its way to the screen.

import { Arrival } from "./arrival.mjs";
import { ByteSlider } from "./byteslider.mjs";
import { bytesText, distanceText, percentText } from "./figures.mjs";
import { depthOf, isGray, rawBytesOf } from "./geometry.mjs";
import { Gestures, pressed } from "./gestures.mjs";
import * as labels from "./labels.mjs";
import { Painter } from "./painter.mjs";
import { Sequential } from "./sequential.mjs";
import { Stage } from "./stage.mjs";
import { View } from "./view.mjs";
import { WindowControl } from "./window.mjs";

const byId = (id) => document.getElementById(id);
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
  #source = null;
  #arrival = null;
  // Of the stream that is shown: its geometry, bytes that have come, bytes of all of it as far as known, where
  // it ends, and the bytes to show; null: all that have come.
  #info = null;
  #arrived = 0;
  #total = null;
  #end = null;
  #chosen = null;

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
    this.#arrival?.cancel();
    const arrival = new Arrival(speed);
    this.#arrival = arrival;
    this.#begin(source);
    try {
      await this.#arrive(arrival);
      return arrival === this.#arrival;
    } catch (error) {
      if (arrival !== this.#arrival) return false;
      arrival.cancel();
      if (this.#info === null) labels.show(false);
      throw error.message.includes(source.name) ? error : new Error(`${source.name}: ${error.message}`);
    }
  }

  #begin(source) {
    clearTimeout(this.#timer);
    this.#source = source;
    this.#info = this.#end = this.#total = this.#chosen = null;
    this.#arrived = 0;
    this.#painter.reset();
    this.#stage.clear();
    byId("sequential").hidden = true;
    labels.say(`${source.name}: opening`);
    labels.distance("known at the end");
    labels.playButton("arriving");
  }

  async #arrive(arrival) {
    const [{ stream, total }] = await Promise.all([this.#source.open(), this.#desk.ask("reset")]);
    if (arrival !== this.#arrival) return;
    this.#total = total;
    this.#slider.open(total);
    this.#openSequential(this.#source);
    const pushes = [];
    const isThere = await arrival.run(stream, (part) => pushes.push(this.#take(part, arrival)));
    await Promise.all(pushes);
    if (isThere) await this.#ended(arrival);
  }

  async #openSequential({ sequential }) {
    const arrival = this.#arrival;
    const file = await sequential?.();
    if (!file || arrival !== this.#arrival) return;
    this.#sequential.open(file);
    byId("sequential").hidden = false;
    this.#showSequential(this.#shownBytes());
  }
  #showSequential(bytes) {
    if (byId("sequential").hidden) return;
    labels.sequentialCaption(this.#sequential.sizeBytes, bytes);
    this.#sequential.show(bytes);
  }

  async #take(part, arrival) {
    const chunk = part.slice();
    const bytes = chunk.length;
    const info = await this.#desk.ask("push", { chunk }, [chunk.buffer]).catch((error) => {
      arrival.cancel();
      throw error;
    });
    if (arrival !== this.#arrival) return;
    this.#arrived += bytes;
    this.#slider.arrived(this.#arrived);
    if (info === null) return;
    if (this.#info === null) this.#know(info);
    if (this.#chosen !== null) return;
    this.#slider.show(this.#arrived);
    this.#painter.arrived(this.#arrived, () => this.#wish());
  }

  #know(info) {
    this.#info = info;
    this.#view.show(info);
    this.#window.open(depthOf(info), isGray(info));
    labels.caption(this.#source.name, info);
    labels.show(true);
    labels.zoom(this.#view.scale);
    labels.say(`${this.#source.name} is arriving`);
  }

  async #ended(arrival) {
    const { bytes, complete, surplus } = await this.#desk.ask("end");
    if (arrival !== this.#arrival) return;
    this.#end = this.#total = this.#arrived = bytes;
    if (this.#chosen >= bytes) this.#chosen = null;
    this.#slider.open(bytes);
    this.#slider.arrived(bytes);
    this.#slider.show(this.#shownBytes());
    labels.playButton("over");
    this.#sayEnd(complete, surplus);
    this.#paint();
  }

  #sayEnd(complete, surplus) {
    const raw = rawBytesOf(this.#info);
    const size = `${bytesText(this.#end)} bytes, ${percentText(this.#end, raw)} of ${bytesText(raw)} raw bytes`;
    const trailer = surplus > 0 ? ` ${bytesText(surplus)} bytes behind the stream are not part of it.` : "";
    labels.say(complete ? `Complete: ${size}. Every bit of the image is there.${trailer}`
      : `The stream ends early, after ${bytesText(this.#end)} bytes: this is an approximation.`);
    byId("save").hidden = false;
  }

  #shownBytes() {
    return this.#chosen ?? this.#arrived;
  }
  #choose(bytes) {
    this.#chosen = bytes;
    this.#paint();
  }

  #wish() {
    return {
      bytes: this.#shownBytes(),
      region: this.#view.region(),
      reduction: this.#view.reduction(),
      window: isGray(this.#info) ? this.#window.range : undefined,
    };
  }
  #paint() {
    if (this.#info === null) return;
    this.#painter.now(this.#wish());
  }
  #viewChanged() {
    labels.zoom(this.#view.scale);
    this.#stage.draw();
    this.#sequential.draw();
    this.#paint();
  }

  #painted(painted, error, { bytes }) {
    if (this.#info === null) return;
    if (error !== null) return this.#fail(error);
    this.#stage.show(painted);
    if (painted.histogram) this.#window.show(painted.histogram);
    labels.figures({ ...painted, bytes }, this.#info, this.#total);
    labels.pictureLabel(this.#source.name, this.#info, this.#total === null ? "some" : percentText(bytes, this.#total));
    this.#showSequential(bytes);
    clearTimeout(this.#timer);
    if (this.#end !== null) this.#timer = setTimeout(() => this.#compare(bytes, this.#arrival), idle);
  }
  #fail(error) {
    this.#arrival.cancel();
    labels.say(`${this.#source.name}: ${error.message}`, true);
  }

  async #compare(bytes, arrival) {
    try {
      const decibels = await this.#desk.ask("distance", { bytes });
      if (arrival === this.#arrival && bytes === this.#shownBytes()) labels.distance(distanceText(decibels));
    } catch (error) {
      if (arrival === this.#arrival) this.#fail(error);
    }
  }

  #dragWindow({ x, y }) {
    const { width, height } = this.#view.stage;
    if (this.#info !== null && isGray(this.#info)) this.#window.drag({ x: x / width, y: y / height });
  }
  autoWindow() {
    if (this.#info !== null && isGray(this.#info)) this.#window.auto();
  }
  allValues() {
    if (this.#info !== null && isGray(this.#info)) this.#window.all();
  }

  setSpeed(speed) {
    if (this.#arrival !== null) this.#arrival.speed = speed;
  }
  /** Holds what arrives, lets it go on, or shows the source once more. */
  async play(speed) {
    if (this.#source === null) return;
    if (this.#end !== null) return this.open(this.#source, speed);
    this.#arrival.isHeld = !this.#arrival.isHeld;
    labels.playButton(this.#arrival.isHeld ? "held" : "arriving");
  }

  step(count) {
    this.#slider.step(count);
  }
  /** Returns: whether it was a key that moves or zooms the picture. */
  press(key) {
    if (!pressed(this.#view, key)) return false;
    this.#viewChanged();
    return true;
  }
  async savedStream() {
    return new Blob([await this.#desk.ask("stream")]);
  }
  get name() {
    return this.#source.name;
  }
}
