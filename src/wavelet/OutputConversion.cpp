#include "wavelet/OutputConversion.h"

#include "image/ColourPixel.h"
#include "wavelet/CWaveletDecoder.h"

namespace qmx {
namespace {

template <class T, class P>
void copyPlanes(const CImageData<T>& image, const SampleLimit<T>& limit, P* out) {
    const std::ptrdiff_t rowSamples = static_cast<std::ptrdiff_t>(image.x) * image.planes;
    for (int r = 0; r < image.y; ++r)
        interleaveRow(image, r, limit, out + r * rowSamples);
}

template <class T>
void copyColours(const CImageData<T>& image, const SampleLimit<T>& limit, unsigned char* out) {
    const auto put = [&](int value) {
        *out++ = static_cast<unsigned char>(limit.apply(static_cast<T>(value)));
    };
    for (int r = 0; r < image.y; ++r) {
        for (int c = 0; c < image.x; ++c) {
            const ColourPixel pixel =
                inverseColour(image.row(0, r)[c], image.row(1, r)[c], image.row(2, r)[c]);
            put(pixel.first);
            put(pixel.second);
            put(pixel.third);
        }
    }
}

}  // namespace

template <class T>
void CWaveletDecoder<T>::convertAndCopyToT(void* out, int bytesPerPixel, int limitBits) {
    const CImageData<T>& samples = *this->image;
    const SampleLimit<T> limit(limitBits);
    if (bytesPerPixel == 1) copyPlanes(samples, limit, static_cast<unsigned char*>(out));
    if (bytesPerPixel == 2) copyPlanes(samples, limit, static_cast<unsigned short*>(out));
    if (bytesPerPixel == 3 && samples.planes == 3)
        copyColours(samples, limit, static_cast<unsigned char*>(out));
}

template void CWaveletDecoder<short>::convertAndCopyToT(void*, int, int);
template void CWaveletDecoder<int>::convertAndCopyToT(void*, int, int);

}  // namespace qmx
