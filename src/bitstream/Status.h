#pragma once

namespace qmx {

// Numbers that are thrown as plain int. A caller that embeds the codec catches int and compares.

/// A bit stream has no more room or no more data; a raw file or a row of output is too short.
inline constexpr int kThrownEndOfStream = 3;
/// An image was asked for with fewer than 1 or more than 3 planes.
inline constexpr int kThrownBadPlaneCount = 5;
/// A file stream could not write its buffer.
inline constexpr int kThrownWriteFailed = 5;
/// The decoder has read as many sections as it was asked to; never leaves the decoder.
inline constexpr int kThrownSectionLimit = 7;

// Results of the coefficient encoder and decoder.

/// Everything was coded.
inline constexpr int kComplete = 0;
/// The stream ended early or was cut at the budget: still a success.
inline constexpr int kCut = 4;
/// Stopped on request; the next call goes on where this one stopped.
inline constexpr int kSuspended = 8;
/// Killed while the decoder was reading section headers.
inline constexpr int kKilled = 16;
/// A section header names a plane or an order that the image does not have. The codec objects also return this
/// for a format that they do not know.
inline constexpr int kInvalidSection = 128;
/// The coder has not run yet.
inline constexpr int kNotRun = -1;
/// The buffer for the pixels is too small; only from the memory decompressor.
inline constexpr int kBufferTooSmall = -1;

/// Returns: whether a result lets the caller use what was coded (complete or cut).
constexpr bool isUsable(int result) {
    return (result & ~kCut) == kComplete;
}

}  // namespace qmx
