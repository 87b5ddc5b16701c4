// What becomes of a file: a stream is shown, a picture is compressed by way of a canvas, raw samples are asked about.

import { bytesText, ratioText, timeText } from "./figures.mjs";
import { say } from "./labels.mjs";
import { askForGeometry } from "./rawdialog.mjs";
import { nameOf, sourceOfBlob, urlOf } from "./sources.mjs";

const mark = "TK30";
/** Browsers leave larger canvases empty. */
const longestSide = 16384;

async function isStream(file) {
  return new TextDecoder("latin1").decode(await file.slice(0, mark.length).arrayBuffer()) === mark;
}

/** Returns: the pixels of a picture that the browser knows, as a canvas has them; null when it does not know them. */
async function pixelsOf(file) {
  let bitmap;
  try {
    bitmap = await createImageBitmap(file, { colorSpaceConversion: "none", premultiplyAlpha: "none" });
  } catch {
    return null;
  }
  if (Math.max(bitmap.width, bitmap.height) > longestSide)
    throw new Error(`${file.name}: ${bitmap.width} × ${bitmap.height} pixels are too many for a canvas`);
  const canvas = Object.assign(document.createElement("canvas"), { width: bitmap.width, height: bitmap.height });
  const context = canvas.getContext("2d", { willReadFrequently: true });
  context.drawImage(bitmap, 0, 0);
  bitmap.close();
  const { width, height, data } = context.getImageData(0, 0, canvas.width, canvas.height);
  return { width, height, rgba: data };
}

/** Returns: a source of the stream, and what to say when it is shown. Throws: Error when the library cannot. */
async function converted(desk, file, wanted) {
  const isPicture = wanted.canvas !== undefined;
  say(`${file.name}: compressing`);
  const { stream, milliseconds, isEqual, rawBytes, isOpaque } = await desk.ask("convert", wanted).catch((error) => {
    throw new Error(`${file.name}: ${error.message}`);
  });
  const back = isEqual ? "decoded again, every sample is equal" : "decoded again, samples differ: please report this";
  const loss = isOpaque ? "" : ", without its transparency";
  const size = `the file has ${bytesText(file.size)} bytes`;
  const way = isPicture ? ` (its pixels as a canvas has them: 8 bits${loss}; ${size})` : "";
  const words = `${file.name}${way}: ${bytesText(rawBytes)} raw bytes became ${bytesText(stream.length)}, ` +
    `${ratioText(stream.length, rawBytes)}, compressed and compared in ${timeText(milliseconds)}; ${back}.`;
  return { ...sourceOfBlob(`${file.name}.tk`, new Blob([stream])), words };
}

/** Returns: a source for a file; null when the user takes it back. Throws: Error that says what is wrong. */
export async function sourceOfFile(desk, file) {
  if (file.size === 0) throw new Error(`${file.name} is empty`);
  if (await isStream(file)) return sourceOfBlob(file.name, file);
  const canvas = await pixelsOf(file);
  if (canvas !== null) return converted(desk, file, { canvas });
  const geometry = await askForGeometry(file);
  if (geometry === null) return null;
  const bytes = new Uint8Array(await file.arrayBuffer());
  return converted(desk, file, { raw: { ...geometry, bytes } });
}

/** Returns: a source of the first bytes of a file on a server, as many as a thumbnail takes. */
export async function sourceOfThumbnail(desk, address) {
  const url = urlOf(address);
  const { stream, width, height, bytes, fileBytes, requests } = await desk.ask("thumbnail", { url: url.href });
  const all = fileBytes === null ? "" : ` of ${bytesText(fileBytes)}`;
  const words = `Enough for a thumbnail of ${width} × ${height} pixels: the first ${bytesText(bytes)}${all} bytes, ` +
    `in ${requests === 1 ? "one request" : `${requests} requests`}.`;
  return { ...sourceOfBlob(nameOf(url), new Blob([stream])), words };
}
