// What can be shown: each source tells its name, and opens as bytes that arrive, any number of times.

/** A source of a file or of bytes that are there. */
export function sourceOfBlob(name, blob) {
  return { name, open: async () => ({ stream: blob.stream(), total: blob.size }) };
}

/** A source of a file on a server. */
export async function sourceOfAddress(address) {
  const url = urlOf(address);
  return { name: nameOf(url), open: (signal) => fetched(url, signal) };
}

/** Throws: Error that says what is wrong. */
export function urlOf(address) {
  try {
    return new URL(address, location.href);
  } catch {
    throw new Error(`${address} is no address`);
  }
}
export function nameOf(url) {
  const last = url.pathname.split("/").at(-1) || url.href;
  try {
    return decodeURIComponent(last);
  } catch {
    return last;
  }
}

async function fetched(url, signal) {
  let response;
  try {
    response = await fetch(url, { signal });
  } catch {
    const isOwn = url.origin === location.origin;
    throw new Error(`${url}: ${isOwn ? "cannot be fetched" : "this page fetches files of its own server only"}`);
  }
  if (!response.ok) throw new Error(`${url}: the server says ${response.status} ${response.statusText}`);
  // A packed answer has another length than its file.
  const length = response.headers.has("Content-Encoding") ? 0 : Number(response.headers.get("Content-Length"));
  return { stream: response.body, total: length || null };
}

/** Returns: the bytes that stand in the page as base64 in an element; null where there are none. */
export function inlineBytes(id) {
  const text = document.getElementById(id).textContent.trim();
  return text === "" ? null : Uint8Array.from(atob(text), (character) => character.charCodeAt(0));
}

/** Returns: whether the photograph is in the page, or beside it. */
export async function hasDemonstration() {
  if (document.getElementById("demo-stream").textContent !== "") return true;
  const response = await fetch("retina.tk", { method: "HEAD" }).catch(() => null);
  return response?.ok ?? false;
}

/** The photograph, and the same samples as PNG: in the page, or beside it. */
export async function demonstration() {
  const bytes = inlineBytes("demo-stream");
  const source = bytes ? sourceOfBlob("retina.tk", new Blob([bytes])) : await sourceOfAddress("retina.tk");
  return { ...source, isDemonstration: true, sequential: demonstrationPng };
}

async function demonstrationPng() {
  const bytes = inlineBytes("demo-png");
  if (bytes) return new Blob([bytes], { type: "image/png" });
  const response = await fetch("retina.png");
  return response.ok ? response.blob() : null;
}
