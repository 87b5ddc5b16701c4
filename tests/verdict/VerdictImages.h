#pragma once

#include <array>

#include "support/TestImages.h"

// Images of all sizes, contents and sample types, cheap enough for hundreds of thousands.

namespace test {

enum class Picture { zero, flat, nearlyFlat, noise, photo, loud };

inline constexpr Picture kAllPictures[] = {Picture::zero,  Picture::flat,  Picture::nearlyFlat,
                                           Picture::noise, Picture::photo, Picture::loud};

inline const char* nameOf(Picture picture) {
    constexpr const char* kNames[] = {"zero", "flat", "nearly flat", "noise", "photo", "loud"};
    return kNames[static_cast<int>(picture)];
}

/// Cuts images of any size up to a square out of larger ones that are made once.
class VerdictImages {
public:
    static constexpr int kGreatestSide = 130;
    static constexpr std::size_t kTypes = 6;

    VerdictImages() {
        for (std::size_t t = 0; t < kTypes; ++t) {
            const auto [bytes, bits] = kBytesAndBits[t];
            noises[t] = makeImage(Content::noise, bytes, bits, kGreatestSide, kGreatestSide, t + 1);
            photos[t] = makeImage(Content::photo, bytes, bits, kGreatestSide, kGreatestSide, t + 1);
            louds[t] = makeImage(Content::noise, bytes, 16, kGreatestSide, kGreatestSide, t + 1);
            // Samples beyond what the header declares.
            louds[t].bitsPerPixel = bytes == 2 ? bits : 6;
        }
    }

    /// Returns: an image of some type, the same one for the same arguments.
    RawImage make(Picture picture, int width, int height) const {
        Random random(
            static_cast<std::uint64_t>((width * 256 + height) * 8 + static_cast<int>(picture)));
        const auto type = static_cast<std::size_t>(random.below(kTypes));
        const auto sample = static_cast<unsigned>(random.below(65536));
        switch (picture) {
            case Picture::zero:
                return filled(type, width, height, 0);
            case Picture::flat:
                return filled(type, width, height, sample);
            case Picture::nearlyFlat: {
                RawImage image = filled(type, width, height, sample);
                image.bytes[random.below(image.bytes.size())] ^= 1;
                return image;
            }
            case Picture::noise:
                return cropped(noises[type], width, height);
            case Picture::photo:
                return cropped(photos[type], width, height);
            case Picture::loud:
                return cropped(louds[type], width, height);
        }
        return {};
    }

private:
    static constexpr std::array<std::array<int, 2>, kTypes> kBytesAndBits = {
        {{1, 8}, {3, 8}, {2, 9}, {2, 12}, {2, 13}, {2, 16}}};

    static RawImage filled(std::size_t type, int width, int height, unsigned sample) {
        const auto [bytes, bits] = kBytesAndBits[type];
        RawImage image{bytes, bits, width, height, {}};
        image.bytes.resize(static_cast<std::size_t>(width * height * bytes));
        const unsigned value = sample & ((1U << bits) - 1);
        for (std::size_t i = 0; i < image.bytes.size(); ++i)
            image.bytes[i] =
                static_cast<unsigned char>(bytes == 2 && i % 2 == 1 ? value >> 8 : value);
        return image;
    }

    static RawImage cropped(const RawImage& whole, int width, int height) {
        RawImage image{whole.bytesPerPixel, whole.bitsPerPixel, width, height, {}};
        const std::ptrdiff_t rowBytes = std::ptrdiff_t{width} * whole.bytesPerPixel;
        const std::ptrdiff_t wholeRowBytes = std::ptrdiff_t{kGreatestSide} * whole.bytesPerPixel;
        // From another corner for each size, so that small images differ.
        const std::ptrdiff_t down = (width * 5) % (kGreatestSide - height + 1);
        const std::ptrdiff_t right = (height * 3) % (kGreatestSide - width + 1);
        for (int r = 0; r < height; ++r) {
            const auto row =
                whole.bytes.begin() + (down + r) * wholeRowBytes + right * whole.bytesPerPixel;
            image.bytes.insert(image.bytes.end(), row, row + rowBytes);
        }
        return image;
    }

    std::array<RawImage, kTypes> noises;
    std::array<RawImage, kTypes> photos;
    std::array<RawImage, kTypes> louds;
};

}  // namespace test
