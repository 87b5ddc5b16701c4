#pragma once

#include <vector>

#include "image/CImageData.h"
#include "support/TestImages.h"

namespace test {

/// Returns: the samples of all planes without row padding.
template <class T>
std::vector<T> samplesOf(const qmx::CImageData<T>& image) {
    std::vector<T> samples;
    for (int p = 0; p < image.planes; ++p)
        for (int r = 0; r < image.y; ++r)
            samples.insert(samples.end(), image.row(p, r), image.row(p, r) + image.x);
    return samples;
}

/// Sets the samples of all planes from a list without row padding.
template <class T>
void setSamples(qmx::CImageData<T>& image, const std::vector<T>& samples) {
    auto next = samples.begin();
    for (int p = 0; p < image.planes; ++p)
        for (int r = 0; r < image.y; ++r)
            for (int c = 0; c < image.x; ++c)
                image.row(p, r)[c] = *next++;
}

/// Fills an image with random samples from 0 to greatest.
template <class T>
void fillRandom(qmx::CImageData<T>& image, unsigned greatest, std::uint64_t seed) {
    Random random(seed);
    for (int p = 0; p < image.planes; ++p)
        for (int r = 0; r < image.y; ++r)
            for (int c = 0; c < image.x; ++c)
                image.row(p, r)[c] = static_cast<T>(random.below(greatest + 1U));
}

}  // namespace test
