#pragma once

#include "support/TestImages.h"

// Images whose plain stream has a section that is longer than its length field can say: bright ones, of
// sizes where the coarsest order has more coefficients than the field was made for.

namespace test {

struct ExposedSize {
    int width;
    int height;
};

inline constexpr ExposedSize kExposedSizes[] = {
    {100, 100}, {127, 127}, {181, 181}, {250, 250}, {400, 300}, {500, 500},
    {5, 21},    {9, 13},    {17, 25},   {6, 700},   {700, 6},   {1000, 1000},
};

enum class Bright { flat, nearlyFlat, field, background };

inline constexpr Bright kAllBrights[] = {Bright::flat, Bright::nearlyFlat, Bright::field,
                                         Bright::background};

/// Returns: a bright sample, as a share of 1: microscopes show bright fields, scanners white paper.
inline double brightness(Bright look, int r, int c, Random& random) {
    const double grain = static_cast<double>(random.below(1001)) / 1000.0 - 0.5;
    switch (look) {
        case Bright::flat:
            return 0.78;
        case Bright::nearlyFlat:
            return 0.78 + 0.024 * grain;
        case Bright::field:
            return 0.75 + 0.1 * std::sin(r * 0.02) * std::cos(c * 0.017) + 0.02 * grain;
        case Bright::background:
            return r % 90 > 40 && r % 90 < 50 && c % 70 > 20 && c % 70 < 32 ? 0.6 : 1.0;
    }
    return 0;
}

inline RawImage makeBright(Bright look, int bytesPerPixel, int bitsPerPixel, int width, int height,
                           std::uint64_t seed = 1) {
    RawImage image{bytesPerPixel, bitsPerPixel, width, height, {}};
    Random random(seed);
    const double greatest = (1U << bitsPerPixel) - 1;
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c)
            for (int p = 0; p < (bytesPerPixel == 3 ? 3 : 1); ++p) {
                const auto sample =
                    static_cast<unsigned>(std::lround(greatest * brightness(look, r, c, random)));
                image.bytes.push_back(static_cast<unsigned char>(sample));
                if (bytesPerPixel == 2)
                    image.bytes.push_back(static_cast<unsigned char>(sample >> 8));
            }
    return image;
}

}  // namespace test
