#include <immintrin.h>

#include "image/PixelKernels.h"

#define QMX_TARGET QMX_TARGET_AVX2

namespace qmx {
namespace {

struct Shorts {
    using Lanes = __m256i;
    static constexpr std::size_t kSamples = 16;

    QMX_TARGET static Lanes load(const void* from) {
        return _mm256_loadu_si256(static_cast<const __m256i*>(from));
    }
    QMX_TARGET static void store(void* to, Lanes lanes) {
        _mm256_storeu_si256(static_cast<__m256i*>(to), lanes);
    }
    QMX_TARGET static Lanes all(short sample) { return _mm256_set1_epi16(sample); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi16(a, b); }
    QMX_TARGET static Lanes halve(Lanes lanes) { return _mm256_srai_epi16(lanes, 1); }
    /// (a + b) >> 1, without the carry that a + b may need.
    QMX_TARGET static Lanes floorMean(Lanes a, Lanes b) {
        return _mm256_add_epi16(_mm256_and_si256(a, b), halve(_mm256_xor_si256(a, b)));
    }
    QMX_TARGET static Lanes clamp(Lanes lanes, Lanes least, Lanes greatest) {
        return _mm256_min_epi16(_mm256_max_epi16(lanes, least), greatest);
    }
    QMX_TARGET static Lanes widen(__m128i bytes) { return _mm256_cvtepu8_epi16(bytes); }
    /// Returns: the low bytes.
    QMX_TARGET static __m128i narrow(Lanes lanes) {
        const Lanes low = _mm256_and_si256(lanes, _mm256_set1_epi16(0xFF));
        return _mm_packus_epi16(_mm256_castsi256_si128(low), _mm256_extracti128_si256(low, 1));
    }
    QMX_TARGET static Lanes loadBytes(const unsigned char* from) {
        return widen(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
    }
    QMX_TARGET static void storeBytes(unsigned char* to, Lanes lanes) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), narrow(lanes));
    }
};

struct Ints {
    using Lanes = __m256i;
    static constexpr std::size_t kSamples = 8;

    QMX_TARGET static Lanes load(const void* from) { return Shorts::load(from); }
    QMX_TARGET static void store(void* to, Lanes lanes) { Shorts::store(to, lanes); }
    QMX_TARGET static Lanes all(int sample) { return _mm256_set1_epi32(sample); }
    QMX_TARGET static Lanes clamp(Lanes lanes, Lanes least, Lanes greatest) {
        return _mm256_min_epi32(_mm256_max_epi32(lanes, least), greatest);
    }
    QMX_TARGET static Lanes loadShorts(const unsigned char* from) {
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
    }
    QMX_TARGET static void storeShorts(unsigned char* to, Lanes lanes) {
        const Lanes low = _mm256_and_si256(lanes, _mm256_set1_epi32(0xFFFF));
        _mm_storeu_si128(
            reinterpret_cast<__m128i*>(to),
            _mm_packus_epi32(_mm256_castsi256_si128(low), _mm256_extracti128_si256(low, 1)));
    }
};

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
    const auto* thirds = reinterpret_cast<const __m128i*>(from);
    const __m128i a = _mm_loadu_si128(thirds);
    const __m128i b = _mm_loadu_si128(thirds + 1);
    const __m128i c = _mm_loadu_si128(thirds + 2);
    return {Shorts::widen(pick(kColourInThird[0], a, b, c)),
            Shorts::widen(pick(kColourInThird[1], a, b, c)),
            Shorts::widen(pick(kColourInThird[2], a, b, c))};
}

/// Puts 16 pixels together.
QMX_TARGET inline void storePixels(unsigned char* to, const ThreeVecs& colours) {
    auto* thirds = reinterpret_cast<__m128i*>(to);
    const __m128i a = Shorts::narrow(colours.first);
    const __m128i b = Shorts::narrow(colours.second);
    const __m128i c = Shorts::narrow(colours.third);
    _mm_storeu_si128(thirds, pick(kThirdInColour[0], a, b, c));
    _mm_storeu_si128(thirds + 1, pick(kThirdInColour[1], a, b, c));
    _mm_storeu_si128(thirds + 2, pick(kThirdInColour[2], a, b, c));
}

#include "image/PixelKernelsSimd.inl"

}  // namespace

const PixelKernels kPixelsAvx2 = kTable;

}  // namespace qmx
