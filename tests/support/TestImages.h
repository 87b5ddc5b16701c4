#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace test {

/// A raw image as its file holds it, with the geometry that the command line gives.
struct RawImage {
    int bytesPerPixel;
    int bitsPerPixel;
    int width;
    int height;
    Bytes bytes;
};

inline std::string nameOf(const RawImage& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels of " +
           std::to_string(image.bytesPerPixel) + " bytes, " + std::to_string(image.bitsPerPixel) +
           " bits";
}

/// A sample type: bytes per pixel and bits per pixel.
struct SampleKind {
    int bytesPerPixel;
    int bitsPerPixel;
};

/// All types whose streams are the same in both profiles.
inline constexpr SampleKind kKindsOfBothProfiles[] = {{1, 8},  {3, 8},  {2, 8}, {2, 9},
                                                      {2, 11}, {2, 13}, {2, 16}};

struct Size {
    int width;
    int height;
};

enum class Content { flat, gradient, noise, photo, sparse };

inline const char* nameOf(Content content) {
    switch (content) {
        case Content::flat:
            return "flat";
        case Content::gradient:
            return "gradient";
        case Content::noise:
            return "noise";
        case Content::photo:
            return "photo";
        case Content::sparse:
            return "sparse";
    }
    return "";
}

/// The same numbers on every machine.
class Random {
public:
    explicit Random(std::uint64_t seed) : state(seed * 0x9E3779B97F4A7C15U + 1) {}
    std::uint64_t next() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state * 0x2545F4914F6CDD1DU >> 11;
    }
    /// Returns: a number from 0 to bound - 1. Requires: bound > 0.
    std::uint64_t below(std::uint64_t bound) { return next() % bound; }

private:
    std::uint64_t state;
};

/// Returns: a sample of the given content; greatest is the largest sample value.
inline unsigned sampleOf(Content content, int r, int c, int p, unsigned greatest, Random& random) {
    const double top = greatest;
    switch (content) {
        case Content::flat:
            return greatest / 2 + static_cast<unsigned>(p);
        case Content::gradient:
            return static_cast<unsigned>(3 * r + 5 * c + 40 * p) % (greatest + 1);
        case Content::noise:
            return static_cast<unsigned>(random.below(greatest + 1U));
        case Content::photo: {
            const double wave = std::sin(r * 0.043 + p) * std::cos(c * 0.031) +
                                0.4 * std::sin((r + 2 * c) * 0.21) + (c % 37 > 18 ? 0.25 : 0.0);
            const double grain = static_cast<double>(random.below(1000)) / 1000.0 - 0.5;
            const double value = top * (0.5 + 0.28 * wave + 0.03 * grain);
            return static_cast<unsigned>(std::fmin(std::fmax(value, 0.0), top));
        }
        case Content::sparse:
            return random.below(97) == 0 ? greatest : 0;
    }
    return 0;
}

inline RawImage makeImage(Content content, int bytesPerPixel, int bitsPerPixel, int width,
                          int height, std::uint64_t seed = 1) {
    RawImage image{bytesPerPixel, bitsPerPixel, width, height, {}};
    Random random(seed);
    const int planes = bytesPerPixel == 3 ? 3 : 1;
    const unsigned greatest = (1U << (bytesPerPixel == 2 ? bitsPerPixel : 8)) - 1;
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c)
            for (int p = 0; p < planes; ++p) {
                const unsigned sample = sampleOf(content, r, c, p, greatest, random);
                image.bytes.push_back(static_cast<unsigned char>(sample));
                if (bytesPerPixel == 2)
                    image.bytes.push_back(static_cast<unsigned char>(sample >> 8));
            }
    return image;
}

/// Returns: an image of any content, type and size up to 40 x 40. Samples may exceed the bits that it
/// declares, so that coefficients wrap.
inline RawImage randomImage(std::uint64_t seed) {
    constexpr SampleKind kKinds[] = {{1, 8}, {3, 8}, {2, 10}, {2, 12}, {2, 13}, {2, 16}};
    Random random(seed);
    const SampleKind kind = kKinds[random.below(std::size(kKinds))];
    const auto content = static_cast<Content>(random.below(5));
    const int width = static_cast<int>(random.below(41));
    const int height = static_cast<int>(random.below(41));
    RawImage image = makeImage(content, kind.bytesPerPixel, kind.bitsPerPixel, width, height, seed);
    if (kind.bytesPerPixel == 2 && random.below(4) == 0)
        for (unsigned char& byte : image.bytes)
            byte = static_cast<unsigned char>(random.next());
    return image;
}

/// Returns: images of all sample types.
inline std::vector<RawImage> imagesOf(Content content, const std::vector<Size>& sizes) {
    constexpr SampleKind kKinds[] = {{1, 8}, {3, 8}, {2, 9}, {2, 12}, {2, 13}, {2, 16}};
    std::vector<RawImage> images;
    for (const auto& [bytes, bits] : kKinds)
        for (const Size size : sizes)
            images.push_back(makeImage(content, bytes, bits, size.width, size.height));
    return images;
}

}  // namespace test
