// Numbers as people read them.

import { depthOf, isGray } from "./geometry.mjs";

const whole = new Intl.NumberFormat("en-GB");

export const bytesText = (bytes) => whole.format(bytes);

export function sizeText(bytes) {
  if (bytes < 1000) return `${bytes} bytes`;
  const [amount, unit] = bytes < 1e6 ? [bytes / 1e3, "kB"] : [bytes / 1e6, "MB"];
  return `${amount.toPrecision(3)} ${unit}`;
}

/** Never rounds up to 100 %: that is said of all of it alone. */
export function percentText(part, all) {
  if (part >= all) return "100 %";
  const percent = (100 * part) / all;
  if (percent < 0.001) return "below 0.001 %";
  if (percent < 1) return `${percent.toPrecision(2)} %`;
  return `${Math.min(percent, 99.9).toFixed(1)} %`;
}

/** A size beside another one, which may be smaller. */
export const ratioText = (bytes, others) => `${((100 * bytes) / others).toFixed(1)} %`;

export function rateText(bytes, samples) {
  const rate = (8 * bytes) / samples;
  return rate < 0.0001 ? "below 0.0001" : rate.toPrecision(3);
}

export const timeText = (milliseconds) =>
  milliseconds < 10 ? `${milliseconds.toFixed(1)} ms` : `${Math.round(milliseconds)} ms`;

/** Of decibels, which are infinite between equal pictures. */
export function distanceText(decibels) {
  if (decibels === null) return "not computed";
  return decibels === Infinity ? "every sample equal" : `${decibels.toFixed(1)} dB`;
}

export function kindText(info) {
  if (!isGray(info)) return "8-bit red, green, blue";
  return info.bytesPerPixel === 2 ? `16-bit gray, ${depthOf(info)} bits declared` : "8-bit gray";
}

export const zoomText = (scale) => `${scale < 0.1 ? (100 * scale).toPrecision(2) : Math.round(100 * scale)} %`;
