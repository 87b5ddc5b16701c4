#include "container/DecompressDriver.h"

#include <cerrno>
#include <cstdint>
#include <memory>

#include "bitstream/CBitFileReader.h"
#include "bitstream/Throwing.h"
#include "coding/decode/CWaveletDecoder.h"
#include "container/ColourTransform.h"
#include "container/DriverMessages.h"
#include "container/FileIo.h"
#include "wavelet/CFilter5_3.h"
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

/// Writes rows of an image to a file as they come, and samples within limits.
template <class T>
class CRawFileSink final : public IRowSink<T> {
public:
    CRawFileSink(const TKHeader& header, const SampleLimit<T>& sampleLimit, std::FILE* rawFile)
        : limit(sampleLimit),
          bytesPerPixel(header.bytesPerPixel),
          rowBytes(header.rawRowBytes()),
          row(std::make_unique_for_overwrite<unsigned char[]>(rowBytes)),
          file(rawFile) {}

    bool take(const CImageData<T>& rows, int slot, int) override {
        convertRow(rows, slot, bytesPerPixel, limit, row.get());
        if (std::fwrite(row.get(), 1, rowBytes, file) != rowBytes) throwEndOfStream();
        return true;
    }

private:
    SampleLimit<T> limit;
    int bytesPerPixel;
    std::size_t rowBytes;
    std::unique_ptr<unsigned char[]> row;
    std::FILE* file;
};

// Only a stream that ended early can leave the range of its samples by itself.
template <class T>
SampleLimit<T> limitOf(int result, const TKHeader& header) {
    return SampleLimit<T>(result == kCut ? header.bitsPerPixel : 0);
}

void checkInput(std::FILE* in) {
    if (std::ferror(in) != 0) throw FileError{FileRole::input, EIO};
}

int refuse(int result) {
    std::printf(kDecompressionError, result);
    return 1;
}

void announceTransforms(const TKHeader& header) {
    std::puts(kTransforming);
    if (header.bytesPerPixel == 3) std::puts(kInverseColour);
}

/// From file to file without planes. The same as the long way, with the same lines in their order.
template <class T>
int decompressByRows(CWaveletDecoder<T>& decoder, const TKHeader& header, std::FILE* in,
                     std::FILE* out) {
    CBitFileReader reader(in);
    std::printf(kReadingStream, kSampleBits<T>);
    const int result = decoder.readSections(reader);
    checkInput(in);
    if (!isUsable(result)) return refuse(result);
    announceTransforms(header);
    std::puts(kWriting);
    CRawFileSink<T> rows(header, limitOf<T>(result, header), out);
    decoder.restoreRows(rows);
    checkInput(in);
    return 0;
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
    checkInput(in.get());
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
    // Without memory for its planes an image is refused, also where they are never touched.
    CImageData<T> image(header.xSize, header.ySize, header.planes());
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&image, &filter, false);
    if (!upper && extra == 0 && decoder.gainsByRows()) {
        const int status = decompressByRows(decoder, header, streamFile.get(), rawFile.get());
        if (status == 0) closeOutput(std::move(rawFile));
        return status;
    }

    const int result = readStream(decoder, std::move(streamFile), upper, extra);
    if (!isUsable(result)) return refuse(result);
    announceTransforms(header);
    decoder.untransform();
    untransformColours(image);
    const SampleLimit<T> limit = limitOf<T>(result, header);
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
