// The words and figures of the page.

import { byId } from "./elements.mjs";
import * as text from "./figures.mjs";
import { samplesOf } from "./geometry.mjs";

const put = (id, words) => (byId(id).textContent = words);

/** Read aloud by screen readers: for what has happened, not for every picture. */
export function say(words, isError = false) {
  put("message", words);
  byId("message").setAttribute("role", isError ? "alert" : "status");
  byId("message").classList.toggle("error", isError);
}

/** Says that something is opened, and nothing of what was there before. */
export function clear(name) {
  for (const id of ["figureBytes", "figurePercent", "figureRate", "figureSize", "figureTime"]) put(id, "–");
  distance("known at the end");
  put("caption", name);
  byId("picture").setAttribute("aria-label", "No picture yet");
  say(`${name}: opening`);
}

export function caption(name, info) {
  put("caption", `${name}: ${info.width} × ${info.height} pixels, ${text.kindText(info)}`);
}

export function sequentialCaption(sizeBytes, shownBytes) {
  const part = shownBytes >= sizeBytes ? "all" : text.bytesText(shownBytes);
  const all = text.bytesText(sizeBytes);
  put("otherCaption", `The same samples as PNG: ${part} of ${all} bytes, as this browser shows them`);
}

/** The figures of a picture that was painted. total: bytes of the stream, or null while nobody knows. */
export function figures({ bytes, size, reduce, milliseconds }, info, total) {
  put("figureBytes", total === null ? text.bytesText(bytes) : `${text.bytesText(bytes)} of ${text.bytesText(total)}`);
  put("figurePercent", total === null ? "–" : text.percentText(bytes, total));
  put("figureRate", text.rateText(bytes, samplesOf(info)));
  put("figureSize", `${size.width} × ${size.height}${reduce === 0 ? ", full size" : `, 1 : ${2 ** reduce}`}`);
  put("figureTime", text.timeText(milliseconds));
}

export const distance = (words) => put("figureDistance", words);
export const zoom = (scale) => put("zoom", text.zoomText(scale));

export function pictureLabel(name, info, part) {
  byId("picture").setAttribute("aria-label", `${name}, ${info.width} by ${info.height} pixels, ${part} of its bytes`);
}

export function playButton(state) {
  const [sign, label] = { arriving: ["❚❚", "Pause"], held: ["▶", "Go on"], over: ["↻", "Once more"] }[state];
  put("play", sign);
  byId("play").setAttribute("aria-label", label);
}

export function show(isThere) {
  for (const id of ["transport", "figures"]) byId(id).hidden = !isThere;
}
