// The slider of bytes is logarithmic: what happens in the first hundredth of a stream takes half of it.

const headerBytes = 16;
export const steps = 1000;

/** Returns: the bytes at a position from 0 to steps. */
export function bytesAt(position, total) {
  if (position >= steps || total <= headerBytes) return total;
  return Math.round(headerBytes * (total / headerBytes) ** (position / steps));
}

/** Returns: the position of bytes, which need not be whole. */
export function positionOf(bytes, total) {
  if (total <= headerBytes || bytes >= total) return steps;
  return bytes <= headerBytes ? 0 : (steps * Math.log(bytes / headerBytes)) / Math.log(total / headerBytes);
}

/** Returns: marks for the parts of a stream that have room, each with its position from 0 to 1. */
export function ticksOf(total) {
  const parts = [[0.001, "0.1 %"], [0.01, "1 %"], [0.1, "10 %"], [1, "100 %"]];
  return parts
    .filter(([part]) => part * total > 4 * headerBytes)
    .map(([part, text]) => ({ text, position: positionOf(part * total, total) / steps }));
}
