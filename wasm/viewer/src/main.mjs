// The page: buttons, keys, dropped files, and its address.

import { Desk } from "./desk.mjs";
import { byId } from "./elements.mjs";
import { say } from "./labels.mjs";
import { sourceOfFile, sourceOfThumbnail } from "./opening.mjs";
import { demonstration, hasDemonstration, inlineBytes, sourceOfAddress } from "./sources.mjs";
import { Viewer } from "./viewer.mjs";

const on = (id, name, does) => byId(id).addEventListener(name, does);

const desk = new Desk(byId("worker").textContent, inlineBytes("module"));
const viewer = new Viewer(desk);
let isSpeedChosen = false;
/** What the user opened last. The page opens something by itself as long as there is nothing. */
let newest = null;

const speed = () => Number(byId("speed").value);

/** Whatever goes wrong is said. */
async function tell(work) {
  try {
    await work;
  } catch (error) {
    say(error.message, true);
  }
}

/** Files of the user come at full speed, unless the user has chosen another. */
async function show(source) {
  if (source === null) return;
  if (!isSpeedChosen) byId("speed").value = source.isDemonstration ? "200000" : "Infinity";
  const isShown = await viewer.open(source, speed());
  if (isShown && source.words) say(source.words);
}

/** What the user opened has the focus: keys are about the picture from now on. */
function showChosen(source) {
  byId("picture").focus({ preventScroll: true });
  return show(source);
}

/** What was chosen last is shown, also when another one takes longer to get ready. */
async function open(source) {
  newest = source;
  try {
    const found = await source;
    if (newest === source) await showChosen(found);
  } catch (error) {
    if (newest === source) say(error.message, true);
  }
}
const openFile = (file) => open(sourceOfFile(desk, file));
const openDemonstration = () => open(demonstration());

function openAddress() {
  const dialog = byId("addressDialog");
  dialog.returnValue = "cancel";
  dialog.onclose = () => {
    const address = byId("url").value;
    if (dialog.returnValue === "open") open(sourceOfAddress(address));
    if (dialog.returnValue === "thumbnail") open(sourceOfThumbnail(desk, address));
  };
  dialog.showModal();
}

async function save() {
  const { name, file } = await viewer.savedStream();
  const address = URL.createObjectURL(file);
  Object.assign(document.createElement("a"), { href: address, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(address), 60000);
}

const keys = {
  " ": () => tell(viewer.play(speed())),
  "[": () => viewer.step(-20),
  "]": () => viewer.step(20),
  a: () => viewer.autoWindow(),
  f: () => viewer.allValues(),
};

/** Buttons and fields keep their own keys, sliders their arrows, dialogs all. */
function pressed(event) {
  if (event.ctrlKey || event.metaKey || event.altKey || document.querySelector("dialog[open]")) return;
  if (event.target.matches("button, select, a, input:not([type=range])")) return;
  if (event.target.matches("input") && event.key.startsWith("Arrow")) return;
  if (event.key === " " && event.repeat) return;
  const does = keys[event.key.length === 1 ? event.key.toLowerCase() : event.key];
  if (does !== undefined) does();
  else if (!viewer.press(event.key)) return;
  event.preventDefault();
}

function takeDrops() {
  for (const name of ["dragover", "drop", "dragleave"])
    addEventListener(name, (event) => {
      document.body.classList.toggle("dropping", name === "dragover");
      if (!event.dataTransfer.types.includes("Files")) return;
      event.preventDefault();
      if (name === "drop") openDropped([...event.dataTransfer.files]);
    });
}

function openDropped(files) {
  if (files.length === 1) openFile(files[0]);
  else say(`${files.length} files were dropped: one at a time, please`, true);
}

function takeInput() {
  on("demonstration", "click", openDemonstration);
  on("file", "change", ({ target }) => {
    const [file] = target.files;
    // So that the same file can be chosen again.
    target.value = "";
    if (file) openFile(file);
  });
  on("address", "click", openAddress);
  on("help", "click", () => byId("helpDialog").showModal());
  on("play", "click", () => tell(viewer.play(speed())));
  on("save", "click", () => tell(save()));
  on("speed", "change", () => {
    isSpeedChosen = true;
    viewer.setSpeed(speed());
  });
  const zooms = { zoomIn: "+", zoomOut: "-", fit: "0", actual: "1" };
  for (const [id, key] of Object.entries(zooms)) on(id, "click", () => viewer.press(key));
  addEventListener("keydown", pressed);
  takeDrops();
}

/** Opens ?file=, or the demonstration: not by itself for people who want less motion, nor where it is missing. */
async function openFirst() {
  const address = new URLSearchParams(location.search).get("file");
  if (address !== null) return show(await sourceOfAddress(address));
  const isThere = await hasDemonstration();
  if (newest !== null) return undefined;
  if (!isThere) return say("Open a file: the demonstration is not beside this page.");
  if (matchMedia("(prefers-reduced-motion: reduce)").matches) return say("Open a file, or see the demonstration.");
  return show(await demonstration());
}

async function begin() {
  takeInput();
  await desk.started.catch((error) => {
    throw new Error(`This browser cannot run the decoder: ${error.message}`);
  });
  if (newest === null) await openFirst();
}

tell(begin());
