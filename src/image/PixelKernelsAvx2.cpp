#include "image/CpuLevel.h"

#ifdef QMX_X86

#include "image/LanesAvx2.h"
#include "image/PixelKernels.h"

namespace qmx {
namespace {

using avx2::Vec;
using Shorts = Vec<short>;

struct ThreeVecs {
    Shorts::Lanes first;
    Shorts::Lanes second;
    Shorts::Lanes third;
};

/// Where the 16 bytes of a vector come from, in another one; kNowhere gives 0.
struct ByteIndices {
    alignas(16) unsigned char from[16];

    QMX_TARGET __m128i load() const {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(from));
    }
};
constexpr unsigned char kNowhere = 0x80;

/// Byte j of a colour is byte 3 j + colour of 16 pixels, here those in one third of them.
constexpr ByteIndices colourInThird(int colour, int third) {
    ByteIndices indices{};
    for (int j = 0; j < 16; ++j) {
        const int at = 3 * j + colour - 16 * third;
        indices.from[j] = at >= 0 && at < 16 ? static_cast<unsigned char>(at) : kNowhere;
    }
    return indices;
}

/// The inverse: where the bytes of a third of 16 pixels come from, in the bytes of a colour.
constexpr ByteIndices thirdInColour(int third, int colour) {
    ByteIndices indices{};
    for (int i = 0; i < 16; ++i) {
        const int at = 16 * third + i;
        indices.from[i] = at % 3 == colour ? static_cast<unsigned char>(at / 3) : kNowhere;
    }
    return indices;
}

constexpr ByteIndices kColourInThird[3][3] = {
    {colourInThird(0, 0), colourInThird(0, 1), colourInThird(0, 2)},
    {colourInThird(1, 0), colourInThird(1, 1), colourInThird(1, 2)},
    {colourInThird(2, 0), colourInThird(2, 1), colourInThird(2, 2)}};
constexpr ByteIndices kThirdInColour[3][3] = {
    {thirdInColour(0, 0), thirdInColour(0, 1), thirdInColour(0, 2)},
    {thirdInColour(1, 0), thirdInColour(1, 1), thirdInColour(1, 2)},
    {thirdInColour(2, 0), thirdInColour(2, 1), thirdInColour(2, 2)}};

/// Returns: the bytes that the indices pick out of a, b and c, merged.
QMX_TARGET inline __m128i pick(const ByteIndices (&indices)[3], __m128i a, __m128i b, __m128i c) {
    const __m128i fromA = _mm_shuffle_epi8(a, indices[0].load());
    const __m128i fromB = _mm_shuffle_epi8(b, indices[1].load());
    const __m128i fromC = _mm_shuffle_epi8(c, indices[2].load());
    return _mm_or_si128(_mm_or_si128(fromA, fromB), fromC);
}

/// Takes 16 pixels apart.
QMX_TARGET inline ThreeVecs loadPixels(const unsigned char* from) {
    const __m128i a = Shorts::loadHalf(from);
    const __m128i b = Shorts::loadHalf(from + 16);
    const __m128i c = Shorts::loadHalf(from + 32);
    return {Shorts::widened(pick(kColourInThird[0], a, b, c)),
            Shorts::widened(pick(kColourInThird[1], a, b, c)),
            Shorts::widened(pick(kColourInThird[2], a, b, c))};
}

/// Puts 16 pixels together.
QMX_TARGET inline void storePixels(unsigned char* to, const ThreeVecs& colours) {
    const __m128i a = Shorts::narrowed(colours.first);
    const __m128i b = Shorts::narrowed(colours.second);
    const __m128i c = Shorts::narrowed(colours.third);
    Shorts::storeHalf(to, pick(kThirdInColour[0], a, b, c));
    Shorts::storeHalf(to + 16, pick(kThirdInColour[1], a, b, c));
    Shorts::storeHalf(to + 32, pick(kThirdInColour[2], a, b, c));
}

#include "image/PixelKernelsSimd.inl"

}  // namespace

const PixelKernels PixelKernels::avx2 = kTable;

}  // namespace qmx

#endif
