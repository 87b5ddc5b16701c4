#pragma once

#include <vector>

namespace qmx {

#pragma GCC visibility push(default)

/// The outcome of compressExactly.
enum class Exactness {
    /// The plain stream restores it.
    plain,
    /// The plain stream would not; this one does, in every decoder.
    rescued,
    /// A side is 1 and not all samples are 0: no stream restores it.
    impossible,
    /// No stream holds such an image: other bytes per pixel than 1, 2 and 3.
    unsupported,
    /// The stream was decoded and is not the image: please report this.
    refuted,
};

/// A stream, header included; empty unless exactness is plain or rescued.
struct ExactStream {
    Exactness exactness = Exactness::unsupported;
    /// How it was rescued: TESK_RESCUE_... bits of tesk.h.
    unsigned rescues = 0;
    std::vector<unsigned char> bytes;
};

/// Compresses a raw image to a complete stream that restores it. Plain streams do not restore some images: small,
/// flat or thin ones, and those whose samples exceed their declared bits.
/// Format: docs/format.md, 15 Images that do not come back.
///
///  - width, height, sampleBits, pixelBytes, data: as for CTeskCompressor.
///  - verify: whether to decode the stream in the end and to compare it with the image.
///
/// Returns: the stream, and what was done for it.
/// Throws: std::bad_alloc.
ExactStream compressExactly(int width, int height, int sampleBits, int pixelBytes, const void* data,
                            bool verify = true);

#pragma GCC visibility pop

}  // namespace qmx
