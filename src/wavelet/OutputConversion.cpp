#include "wavelet/OutputConversion.h"

#include "image/ColourPixel.h"

namespace qmx {
namespace {

template <class T>
void convertColours(const CImageData<T>& image, int r, const SampleLimit<T>& limit,
                    unsigned char* out) {
    const auto put = [&](int value) {
        *out++ = static_cast<unsigned char>(limit.apply(static_cast<T>(value)));
    };
    for (int c = 0; c < image.x; ++c) {
        const ColourPixel pixel =
            inverseColour(image.row(0, r)[c], image.row(1, r)[c], image.row(2, r)[c]);
        put(pixel.first);
        put(pixel.second);
        put(pixel.third);
    }
}

/// The same, by a kernel where there is one.
template <class T>
void convertColourRow(const CImageData<T>& image, int r, const SampleLimit<T>& limit,
                      unsigned char* out) {
    if constexpr (std::is_same_v<T, short>) {
        const auto rows = colourRows<const T>(image, r);
        const auto count = static_cast<std::size_t>(image.x);
        activePixelKernels().joinColours(out, rows.data(), count, limit.range());
    } else {
        convertColours(image, r, limit, out);
    }
}

}  // namespace

template <class T>
std::size_t outputRowBytes(const CImageData<T>& image, int bytesPerPixel) {
    const bool isColour = bytesPerPixel == 3;
    if (bytesPerPixel < 1 || bytesPerPixel > 3 || (isColour && image.planes != 3)) return 0;
    const std::size_t sampleBytes = bytesPerPixel == 2 ? 2 : 1;
    return static_cast<std::size_t>(image.x) * static_cast<std::size_t>(image.planes) * sampleBytes;
}

template <class T>
void convertRow(const CImageData<T>& image, int r, int bytesPerPixel, const SampleLimit<T>& limit,
                void* out) {
    if (bytesPerPixel == 1) interleaveRow<unsigned char>(image, r, limit, out);
    if (bytesPerPixel == 2) interleaveRow<unsigned short>(image, r, limit, out);
    if (bytesPerPixel == 3) convertColourRow(image, r, limit, static_cast<unsigned char*>(out));
}

template std::size_t outputRowBytes<short>(const CImageData<short>&, int);
template std::size_t outputRowBytes<int>(const CImageData<int>&, int);
template void convertRow<short>(const CImageData<short>&, int, int, const SampleLimit<short>&,
                                void*);
template void convertRow<int>(const CImageData<int>&, int, int, const SampleLimit<int>&, void*);

}  // namespace qmx
