// The worker: answers the page's questions one after the other. It decodes, and the page stays quick.

import { loadEncoder } from "../../package/encoder.mjs";
import { load } from "../../package/tesk.mjs";
import { fetchThumbnail } from "../../package/thumbnail.mjs";
import { convert, imageOfCanvas, imageOfRaw } from "./converting.mjs";
import { Pictures } from "./pictures.mjs";

let module;
let pictures;

const answers = {
  async start({ bytes }) {
    module = await WebAssembly.compile(bytes);
    pictures = new Pictures(await load(module));
  },
  reset: () => pictures.reset(),
  push: ({ chunk }) => pictures.push(chunk),
  end: () => pictures.end(),
  paint: (wanted) => pictures.paint(wanted),
  distance: ({ bytes }) => pictures.distance(bytes),
  stream: () => pictures.stream(),
  async thumbnail({ url }) {
    const decoder = await load(module);
    const { bytes, fileBytes, requests, picture } = await fetchThumbnail(decoder, url);
    const { width, height } = picture;
    return { bytes, fileBytes, requests, width, height, stream: decoder.stream().slice() };
  },
  async convert({ canvas, raw }) {
    const encoder = await loadEncoder(module);
    const { image, isOpaque = true } = canvas ? imageOfCanvas(canvas) : { image: imageOfRaw(raw) };
    return { ...convert(encoder, await load(module), image), isOpaque };
  },
};

const transferable = (answer) =>
  [answer?.rgba?.buffer, answer?.stream?.buffer, answer?.buffer].filter((buffer) => buffer instanceof ArrayBuffer);

// Questions are answered in order, also those whose answer takes time.
let last = Promise.resolve();

async function answer({ id, question, values }) {
  try {
    const found = await answers[question](values);
    self.postMessage({ id, answer: found }, transferable(found));
  } catch (error) {
    self.postMessage({ id, error: error.message });
  }
}

self.onmessage = ({ data }) => {
  const answered = last.then(() => answer(data));
  // A thumbnail waits for a server, with a decoder of its own: nobody waits for it.
  if (data.question !== "thumbnail") last = answered;
};
