#pragma once

#include "support/CodecObjects.h"

// The images that streams are made exact for: sample types, contents and sizes.

namespace test {

/// Sample types, and types whose samples have more bits than are declared.
struct ExactKind {
    int bytesPerPixel;
    int declaredBits;
    int sampleBits;
};

inline constexpr ExactKind kExactKinds[] = {
    {1, 8, 8},  {3, 8, 8},   {2, 8, 8},   {2, 11, 11}, {2, 12, 12}, {2, 13, 13}, {2, 16, 16},
    {2, 9, 12}, {2, 10, 16}, {2, 12, 13}, {2, 12, 16}, {2, 14, 16}, {1, 5, 8},
};

enum class Look { constant, nearlyConstant, gradient, noise, photo, bright, dark };

inline constexpr Look kAllLooks[] = {Look::constant, Look::nearlyConstant, Look::gradient,
                                     Look::noise,    Look::photo,          Look::bright,
                                     Look::dark};

inline const char* nameOf(Look look) {
    constexpr const char* kNames[] = {"constant", "nearly constant", "gradient", "noise",
                                      "photo",    "bright",          "dark"};
    return kNames[static_cast<int>(look)];
}

inline unsigned sampleOf(Look look, int r, int c, int p, unsigned greatest, Random& random) {
    switch (look) {
        case Look::constant:
            return greatest - greatest / 3;
        case Look::nearlyConstant:
            return greatest / 2 + 1 + static_cast<unsigned>(random.below(3)) - 1;
        case Look::gradient:
            return sampleOf(Content::gradient, r, c, p, greatest, random);
        case Look::noise:
            return sampleOf(Content::noise, r, c, p, greatest, random);
        case Look::photo:
            return sampleOf(Content::photo, r, c, p, greatest, random);
        case Look::bright:
            return greatest - static_cast<unsigned>(random.below(greatest / 16 + 1));
        case Look::dark:
            return static_cast<unsigned>(random.below(greatest / 32 + 2));
    }
    return 0;
}

inline RawImage makeExactImage(Look look, const ExactKind& kind, int width, int height,
                               std::uint64_t seed = 1) {
    RawImage image{kind.bytesPerPixel, kind.declaredBits, width, height, {}};
    Random random(seed);
    const int planes = kind.bytesPerPixel == 3 ? 3 : 1;
    const unsigned greatest = (1U << kind.sampleBits) - 1;
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c)
            for (int p = 0; p < planes; ++p) {
                const unsigned sample = sampleOf(look, r, c, p, greatest, random);
                image.bytes.push_back(static_cast<unsigned char>(sample));
                if (kind.bytesPerPixel == 2)
                    image.bytes.push_back(static_cast<unsigned char>(sample >> 8));
            }
    return image;
}

inline std::string describe(const RawImage& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height) + ", " +
           std::to_string(image.bytesPerPixel) + " bytes, " + std::to_string(image.bitsPerPixel) +
           " bits";
}

}  // namespace test
