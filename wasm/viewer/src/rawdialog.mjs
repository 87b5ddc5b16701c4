// Asks for the geometry of raw samples.

import { byId } from "./elements.mjs";
import { bytesText } from "./figures.mjs";
import { bytesPerPixelOf } from "./geometry.mjs";


/** Returns: the sides of the squarest image of so many pixels. */
export function squarest(pixels) {
  let height = Math.floor(Math.sqrt(pixels));
  while (height > 1 && pixels % height !== 0) --height;
  return { width: pixels / Math.max(height, 1), height };
}

function chosen() {
  return {
    width: Number(byId("rawWidth").value),
    height: Number(byId("rawHeight").value),
    kind: byId("rawKind").value,
    skip: Number(byId("rawSkip").value),
  };
}

const areSides = (side) => Number.isInteger(side) && side >= 1 && side <= 65535;

function fit(needed, size) {
  if (needed === size) return "all of the file";
  return needed < size ? `${bytesText(size - needed)} bytes are left over` : "more than the file has";
}

/** Says whether the file has as many bytes as that; if not, it cannot be opened so. */
function check(size) {
  const { width, height, kind, skip } = chosen();
  const needed = skip + width * height * bytesPerPixelOf[kind];
  const before = skip ? ` + ${bytesText(skip)}` : "";
  const sum = `${width} × ${height} × ${bytesPerPixelOf[kind]}${before} = ${bytesText(needed)} bytes`;
  const isEnough = needed <= size && byId("rawDialog").querySelector("form").checkValidity();
  byId("rawAnswer").textContent = areSides(width) && areSides(height) ? `${sum}: ${fit(needed, size)}.`
    : "Sides are whole numbers from 1 to 65,535.";
  byId("rawOpen").disabled = !isEnough;
}

/** A first guess. */
function suggest(size) {
  const kind = byId("rawKind").value;
  const { width, height } = squarest(Math.floor(size / bytesPerPixelOf[kind]));
  byId("rawWidth").value = width;
  byId("rawHeight").value = height;
  byId("rawSkip").value = 0;
  check(size);
}

/** Returns: what the user says, or null. */
export function askForGeometry(file) {
  const dialog = byId("rawDialog");
  byId("rawName").textContent = `${file.name}: ${bytesText(file.size)} bytes, neither a stream of tesk nor a picture ` +
    "that this browser opens. What do its samples look like?";
  suggest(file.size);
  byId("rawKind").onchange = () => suggest(file.size);
  for (const id of ["rawWidth", "rawHeight", "rawSkip"]) byId(id).oninput = () => check(file.size);
  dialog.returnValue = "cancel";
  dialog.showModal();
  return new Promise((resolve) => {
    dialog.onclose = () => resolve(dialog.returnValue === "open" ? chosen() : null);
  });
}
