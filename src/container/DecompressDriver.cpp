#include "container/DecompressDriver.h"

#include <cerrno>
#include <cstdint>
#include <memory>

#include "bitstream/CBitFileReader.h"
#include "bitstream/Throwing.h"
#include "container/ColourTransform.h"
#include "container/DriverMessages.h"
#include "container/FileIo.h"
#include "wavelet/CFilter5_3.h"
#include "wavelet/CWaveletDecoder.h"
#include "wavelet/OutputConversion.h"

namespace qmx {
namespace {

/// Decodes the coefficients; a suspended call is repeated once, without the extra number
/// (Quirk 10).
int readCoefficients(IWaveletDecoder& decoder, CBitReader& reader, unsigned coefficientBits,
                     int extra) {
    std::printf(kReadingStream, coefficientBits);
    const int result = decoder.readWavelet(reader, extra);
    return result == kSuspended ? decoder.readWavelet(reader, 0) : result;
}

template <class T>
int readStream(CWaveletDecoder<T>& decoder, FilePtr in, bool upper, int extra) {
    if (upper) {
        std::puts(kReadingToMemory);
        const FileBytes stream = readRest(in.get());
        CBitReader reader(stream.bytes.get(), stream.sizeBytes);
        return readCoefficients(decoder, reader, kSampleBits<T>, extra);
    }
    CBitFileReader reader(in.get());
    const int result = readCoefficients(decoder, reader, kSampleBits<T>, extra);
    if (std::ferror(in.get()) != 0) throw FileError{FileRole::input, EIO};
    return result;
}

template <class T, class P>
void writeRows(const CImageData<T>& image, const SampleLimit<T>& limit, std::FILE* out) {
    std::puts(kWriting);
    const std::size_t rowSamples =
        static_cast<std::size_t>(image.x) * static_cast<std::size_t>(image.planes);
    // An array of its own even for rows without samples: fwrite takes no null.
    const auto row = std::make_unique_for_overwrite<P[]>(rowSamples);
    for (int r = 0; r < image.y; ++r) {
        interleaveRow<P>(image, r, limit, row.get());
        if (std::fwrite(row.get(), sizeof(P), rowSamples, out) != rowSamples) throwEndOfStream();
    }
}

template <class T, class P>
void writeStaged(const CImageData<T>& image, const SampleLimit<T>& limit, std::FILE* out) {
    std::printf(kCopying, kSampleBits<P>);
    const std::size_t rowSamples =
        static_cast<std::size_t>(image.x) * static_cast<std::size_t>(image.planes);
    const std::size_t samples = rowSamples * static_cast<std::size_t>(image.y);
    const auto staging = std::make_unique_for_overwrite<P[]>(samples);
    for (int r = 0; r < image.y; ++r)
        interleaveRow<P>(image, r, limit, staging.get() + static_cast<std::size_t>(r) * rowSamples);
    std::puts(kWriting);
    writeAll(out, FileRole::output, staging.get(), samples * sizeof(P));
}

}  // namespace

template <class T, class P>
int decompress(TKHeader header, std::FILE* in, std::FILE* out, bool upper, int extra) {
    FilePtr streamFile(in);
    FilePtr rawFile(out);
    streamFile = makeSeekable(std::move(streamFile), &header, sizeof header);
    CImageData<T> image(header.xSize, header.ySize, header.planes());
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&image, &filter, false);

    const int result = readStream(decoder, std::move(streamFile), upper, extra);
    if (!isUsable(result)) {
        std::printf(kDecompressionError, result);
        return 1;
    }
    std::puts(kTransforming);
    decoder.untransform();
    if (header.bytesPerPixel == 3) {
        std::puts(kInverseColour);
        untransformColours(image);
    }
    // Only a stream that ended early can leave the range of its samples by itself.
    const SampleLimit<T> limit(result == kCut ? header.bitsPerPixel : 0);
    if (upper) {
        writeStaged<T, P>(image, limit, rawFile.get());
    } else {
        writeRows<T, P>(image, limit, rawFile.get());
    }
    closeOutput(std::move(rawFile));
    return 0;
}

template int decompress<short, unsigned char>(TKHeader, std::FILE*, std::FILE*, bool, int);
template int decompress<short, unsigned short>(TKHeader, std::FILE*, std::FILE*, bool, int);
template int decompress<int, unsigned short>(TKHeader, std::FILE*, std::FILE*, bool, int);

}  // namespace qmx
