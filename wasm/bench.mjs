// Times the package in Node: `node wasm/bench.mjs FILE,BYTES/PIXEL,BITS/SAMPLE,WIDTH,HEIGHT ...`, raw files.
// Each figure is the least of several runs, in milliseconds.

import { readFileSync } from "node:fs";
import { argv, versions } from "node:process";

import { loadEncoder } from "../build/wasm/package/encoder.mjs";
import { load, toRgba } from "../build/wasm/package/tesk.mjs";

const runs = 15;

function milliseconds(call) {
  let least = Infinity;
  for (let run = 0; run < runs; ++run) {
    const start = performance.now();
    call();
    least = Math.min(least, performance.now() - start);
  }
  return least.toFixed(1);
}

/** Returns: the image that an argument names. */
function imageOf(argument) {
  const [file, bytesPerPixel, bitsPerSample, width, height] = argument.split(",");
  const image = { width: +width, height: +height, bytesPerPixel: +bytesPerPixel, bitsPerSample: +bitsPerSample };
  return { ...image, samples: new Uint8Array(readFileSync(file)) };
}

async function timesOf(image) {
  const encoder = await loadEncoder();
  const stream = encoder.encode(image, { verify: false });
  const start = performance.now();
  const decoder = await load();
  const loaded = performance.now();
  decoder.push(stream);
  const picture = { ...decoder.decode() };
  const first = performance.now();
  picture.samples = picture.samples.slice();
  const prefix = (share) => ({ prefix: Math.ceil(stream.length * share) });
  return {
    // Of the first image only: engines keep what they compiled.
    load: (loaded - start).toFixed(1),
    "first decode": (first - loaded).toFixed(1),
    encode: milliseconds(() => encoder.encode(image, { verify: false })),
    "encode, verified": milliseconds(() => encoder.encode(image)),
    decode: milliseconds(() => decoder.decode()),
    "decode 10 %": milliseconds(() => decoder.decode(prefix(0.1))),
    "decode 0.5 %": milliseconds(() => decoder.decode(prefix(0.005))),
    "decode 0.5 %, 1 : 8": milliseconds(() => decoder.decode({ ...prefix(0.005), reduce: 3 })),
    "decode, 1 : 8": milliseconds(() => decoder.decode({ reduce: 3 })),
    toRgba: milliseconds(() => toRgba(picture)),
  };
}

console.log(`node ${versions.node}, v8 ${versions.v8}, least of ${runs} runs, ms`);
for (const argument of argv.slice(2)) {
  console.log(argument);
  console.table(await timesOf(imageOf(argument)));
}
