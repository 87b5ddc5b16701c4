// Every export of the package, used as its types say. `tsc --strict --noEmit` reads it, nothing runs it.

import { Decoder, load, TeskError, toRgba } from "tesk";
import type { DecodeOptions, Info, Picture, Source } from "tesk";
import { Encoder, loadEncoder, TeskError as EncoderError } from "tesk/encoder";
import type { EncodeOptions, Image } from "tesk/encoder";
import { fetchThumbnail } from "tesk/thumbnail";
import type { Thumbnail, ThumbnailOptions } from "tesk/thumbnail";

export async function fromAllSources(bytes: Uint8Array, module: WebAssembly.Module): Promise<[Decoder[], Encoder[]]> {
  const sources: Source[] = [bytes, bytes.buffer, module, new Response(bytes), fetch("tesk-decoder.wasm")];
  // @ts-expect-error load makes them
  new Decoder();
  // @ts-expect-error loadEncoder makes them
  new Encoder();
  return [
    await Promise.all([load(), ...sources.map((source) => load(source))]),
    await Promise.all([loadEncoder(), ...sources.map((source) => loadEncoder(source))]),
  ];
}

export function decode(decoder: Decoder, chunk: Uint8Array, canvas: CanvasRenderingContext2D): number {
  decoder.push(chunk);
  const nothing: void = decoder.reset();
  const info: Info | null = decoder.probe();
  // @ts-expect-error there may be too few bytes
  info.width;
  const { bytes, complete }: { bytes: number; complete: boolean } = decoder.measure();
  const options: DecodeOptions = { prefix: bytes, reduce: 1, maxPixels: 1e6 };
  const picture: Picture = decoder.decode(options);
  decoder.decode();
  // @ts-expect-error there is no such option
  decoder.decode({ scale: 2 });
  // @ts-expect-error it is read only
  decoder.bytes = 0;
  // @ts-expect-error it is read only
  picture.width = 0;
  const samples: Uint8Array | Uint16Array = picture.samples;
  const pixels: Uint8ClampedArray = toRgba(picture, [0, 4095]);
  canvas.putImageData(new ImageData(toRgba(picture), picture.width, picture.height), 0, 0);
  decoder.close();
  const flag: boolean = complete && picture.complete;
  const numbers: number[] = [picture.height, picture.bytesPerPixel, picture.bitsPerSample, picture.reductions];
  return numbers.length + samples.length + pixels.length + Number(flag) + decoder.bytes + Number(nothing);
}

export function encode(encoder: Encoder, picture: Picture): Uint8Array {
  const image: Image = { width: 2, height: 2, bytesPerPixel: 1, samples: new Uint8ClampedArray(4) };
  const options: EncodeOptions = { budget: 16, verify: false };
  encoder.encode(image);
  encoder.encode(picture);
  encoder.encode({ ...image, bitsPerSample: 8, samples: new Uint16Array(2) });
  // @ts-expect-error samples are missing
  encoder.encode({ width: 2, height: 2, bytesPerPixel: 1 });
  return encoder.encode(image, options);
}

export async function thumbnail(decoder: Decoder): Promise<Picture> {
  const options: ThumbnailOptions = { side: 100, bitsPerSample: 3, signal: new AbortController().signal };
  const small: Thumbnail = await fetchThumbnail(decoder, new URL("https://example.org/a.tk"), options);
  const fileBytes: number | null = small.fileBytes;
  await fetchThumbnail(decoder, "a.tk");
  return small.bytes + small.reduce + small.requests > (fileBytes ?? 0) ? small.picture : decoder.decode();
}

export function statusOf(error: unknown): number {
  const own: EncoderError = new TeskError("words", 3);
  return error instanceof TeskError ? error.status + own.message.length : 0;
}
