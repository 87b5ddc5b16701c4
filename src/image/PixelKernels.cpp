#include "image/PixelKernels.h"

#include <algorithm>
#include <cstring>

#include "image/ColourPixel.h"

namespace qmx {
namespace {

constexpr std::size_t kColours = 3;

void widenBytes(short* row, const unsigned char* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        row[i] = samples[i];
}

void widenShorts(int* row, const unsigned char* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        unsigned short sample;
        std::memcpy(&sample, samples + 2 * i, sizeof sample);
        row[i] = sample;
    }
}

void separateBytes(short* const rows[3], const unsigned char* samples, std::size_t count) {
    for (std::size_t p = 0; p < kColours; ++p)
        for (std::size_t i = 0; i < count; ++i)
            rows[p][i] = samples[kColours * i + p];
}

void separateColours(short* const rows[3], const unsigned char* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, samples += kColours) {
        const ColourPixel pixel = forwardColour(samples[0], samples[1], samples[2]);
        rows[0][i] = static_cast<short>(pixel.first);
        rows[1][i] = static_cast<short>(pixel.second);
        rows[2][i] = static_cast<short>(pixel.third);
    }
}

template <class P, class T>
void putSample(unsigned char* samples, std::size_t i, T sample, SampleRange<T> range) {
    const P narrow = static_cast<P>(std::clamp(sample, range.least, range.greatest));
    std::memcpy(samples + i * sizeof(P), &narrow, sizeof narrow);
}

template <class P, class T>
void narrow(unsigned char* samples, const T* row, std::size_t count, SampleRange<T> range) {
    for (std::size_t i = 0; i < count; ++i)
        putSample<P, T>(samples, i, row[i], range);
}

// Local pointers: bytes may alias the array of pointers, and then nothing is in vectors.
void joinColours(unsigned char* __restrict samples, const short* const rows[3], std::size_t count,
                 SampleRange<short> range) {
    const short* const first = rows[0];
    const short* const second = rows[1];
    const short* const third = rows[2];
    for (std::size_t i = 0; i < count; ++i) {
        const ColourPixel pixel = inverseColour(first[i], second[i], third[i]);
        const auto put = [&](std::size_t p, int value) {
            putSample<unsigned char>(samples, kColours * i + p, static_cast<short>(value), range);
        };
        put(0, pixel.first);
        put(1, pixel.second);
        put(2, pixel.third);
    }
}

constexpr PixelKernels kTable{widenBytes,
                              widenShorts,
                              separateBytes,
                              separateColours,
                              narrow<unsigned char, short>,
                              narrow<unsigned short, short>,
                              narrow<unsigned short, int>,
                              joinColours};

}  // namespace

const PixelKernels PixelKernels::scalar = kTable;

}  // namespace qmx
