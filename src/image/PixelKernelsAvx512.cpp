#include "image/CpuLevel.h"

#ifdef QMX_X86

#include "image/LanesAvx512.h"
#include "image/PixelKernels.h"

namespace qmx {
namespace {

using avx512::Vec;
using Shorts = Vec<short>;

struct ThreeVecs {
    Shorts::Lanes first;
    Shorts::Lanes second;
    Shorts::Lanes third;
};

constexpr int kPixelsBytes = 96;
constexpr int kVectorBytes = 64;
/// Bit 6 of an index chooses the second of two vectors.
constexpr int kOfSecond = 64;

struct ByteIndices {
    alignas(64) unsigned char from[64];
};

/// Byte j of a colour is byte 3 j + colour of 32 pixels in two vectors; it becomes the low byte of
/// lane j.
constexpr ByteIndices colourInPixels(std::size_t colour) {
    ByteIndices indices{};
    for (std::size_t j = 0; j < Shorts::kSamples; ++j)
        indices.from[2 * j] = static_cast<unsigned char>(3 * j + colour);
    return indices;
}

/// The inverse: where bytes first, first + 1, .. of 32 pixels come from, in the low bytes of the lanes
/// of two colours, or of the third colour alone.
constexpr ByteIndices pixelsInColours(int first) {
    ByteIndices indices{};
    for (int i = 0; i < kVectorBytes && first + i < kPixelsBytes; ++i) {
        const int lane = (first + i) / 3;
        const int second = (first + i) % 3 == 1 ? kOfSecond : 0;
        indices.from[i] = static_cast<unsigned char>(2 * lane + second);
    }
    return indices;
}

constexpr unsigned long long thirdColours(int first) {
    unsigned long long mask = 0;
    for (int i = 0; i < kVectorBytes; ++i)
        if ((first + i) % 3 == 2) mask |= 1ULL << i;
    return mask;
}

constexpr ByteIndices kColours[3] = {colourInPixels(0), colourInPixels(1), colourInPixels(2)};
constexpr ByteIndices kFrontPixels = pixelsInColours(0);
constexpr ByteIndices kRestOfPixels = pixelsInColours(kVectorBytes);
constexpr __mmask64 kLowBytes = 0x5555555555555555;

QMX_TARGET inline Shorts::Lanes colourOf(const ByteIndices& indices, __m512i front, __m512i rest) {
    return _mm512_maskz_permutex2var_epi8(kLowBytes, front, _mm512_load_si512(indices.from), rest);
}

/// Takes 32 pixels apart.
QMX_TARGET inline ThreeVecs loadPixels(const unsigned char* from) {
    const __m512i front = Shorts::load(from);
    const __m512i rest = _mm512_castsi256_si512(Shorts::loadHalf(from + kVectorBytes));
    return {colourOf(kColours[0], front, rest), colourOf(kColours[1], front, rest),
            colourOf(kColours[2], front, rest)};
}

QMX_TARGET inline __m512i pixelsOf(const ByteIndices& indices, __mmask64 isThird,
                                   const ThreeVecs& colours) {
    const __m512i from = _mm512_load_si512(indices.from);
    const __m512i two = _mm512_permutex2var_epi8(colours.first, from, colours.second);
    return _mm512_mask_permutexvar_epi8(two, isThird, from, colours.third);
}

/// Puts 32 pixels together.
QMX_TARGET inline void storePixels(unsigned char* to, const ThreeVecs& colours) {
    constexpr __mmask64 kThirdInFront = thirdColours(0);
    constexpr __mmask64 kThirdInRest = thirdColours(kVectorBytes);
    Shorts::store(to, pixelsOf(kFrontPixels, kThirdInFront, colours));
    const __m512i rest = pixelsOf(kRestOfPixels, kThirdInRest, colours);
    Shorts::storeHalf(to + kVectorBytes, Shorts::lowHalf(rest));
}

#include "image/PixelKernelsSimd.inl"

}  // namespace

const PixelKernels PixelKernels::avx512 = kTable;

}  // namespace qmx

#endif
