#pragma once

#include <cstdio>
#include <memory>

#include "bitstream/CBitFileReader.h"
#include "bitstream/Status.h"
#include "coding/decode/CWaveletDecoder.h"
#include "coding/encode/CWaveletEncoder.h"
#include "container/Budget.h"
#include "container/ColourTransform.h"
#include "container/SampleDispatch.h"
#include "support/TestImages.h"
#include "wavelet/CFilter5_3.h"

// The way of an image through the library's classes, from memory to memory and without the progress
// lines of the drivers.

namespace test {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Returns: a file in memory that holds bytes, open for reading at its start.
inline File fileOf(const Bytes& bytes) {
    File file(std::tmpfile());
    if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::rewind(file.get());
    return file;
}

inline qmx::TKHeader headerOf(const RawImage& image) {
    return qmx::makeHeader(image.bytesPerPixel, image.bitsPerPixel, image.width, image.height);
}

template <class T, class P>
void readPlanes(qmx::CImageData<T>& planes, const RawImage& image) {
    const File raw = fileOf(image.bytes);
    planes.template rawReadT<P>(raw.get());
    if (image.bytesPerPixel == 3) qmx::transformColours(planes);
}

template <class T, class P>
Bytes encodeAs(const RawImage& image, std::uint64_t roomBytes, int extra) {
    qmx::CImageData<T> planes(image.width, image.height, image.bytesPerPixel == 3 ? 3 : 1);
    qmx::CFilter5_3<T> filter;
    qmx::CWaveletEncoder<T> encoder(&planes, &filter, false);
    readPlanes<T, P>(planes, image);
    encoder.transform();

    const qmx::TKHeader header = headerOf(image);
    Bytes stream(sizeof header + roomBytes);
    std::memcpy(stream.data(), &header, sizeof header);
    qmx::CBitWriter writer(stream.data() + sizeof header, roomBytes);
    try {
        if (encoder.writeWavelet(writer, extra) == qmx::kSuspended)
            encoder.writeWavelet(writer, extra);
    } catch (int number) {
        EXPECT_EQ(number, qmx::kThrownEndOfStream);
    }
    stream.resize(sizeof header + (writer.getTotal() + 7) / 8);
    return stream;
}

/// Returns: the stream file of an image, complete or cut to roomBytes behind the header.
inline Bytes encode(const RawImage& image, std::uint64_t roomBytes = ~std::uint64_t{0},
                    int extra = 0) {
    const std::uint64_t room =
        std::min(roomBytes, qmx::completeStreamBoundBytes(headerOf(image), 32));
    Bytes stream;
    qmx::dispatchSamples(
        headerOf(image), qmx::MostBitsOfShort::inFiles,
        [&]<class T, class P>() {
            stream = encodeAs<T, P>(image, room, extra);
            return 0;
        },
        [] { return 1; });
    return stream;
}

struct Decoded {
    int status = qmx::kNotRun;
    /// Empty when the status says that nothing was decoded.
    Bytes bytes;
};

enum class ReadFrom { memory, file };

template <class T>
Decoded decodeAs(const qmx::TKHeader& header, qmx::CBitReader& reader, int extra) {
    qmx::CImageData<T> planes(header.xSize, header.ySize, header.planes());
    qmx::CFilter5_3<T> filter;
    qmx::CWaveletDecoder<T> decoder(&planes, &filter, false);
    Decoded decoded;
    decoded.status = decoder.readWavelet(reader, extra);
    if (decoded.status == qmx::kSuspended) decoded.status = decoder.readWavelet(reader, 0);
    if (!qmx::isUsable(decoded.status)) return decoded;
    decoder.untransform();
    decoded.bytes.resize(std::size_t{header.xSize} * header.ySize * header.bytesPerPixel);
    decoder.convertAndCopyToT(decoded.bytes.data(), header.bytesPerPixel,
                              decoded.status == qmx::kCut ? header.bitsPerPixel : 0);
    return decoded;
}

/// Decodes a stream file of at least 16 bytes.
inline Decoded decode(const Bytes& stream, ReadFrom from = ReadFrom::memory, int extra = 0) {
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    const File file = fileOf(stream);
    std::fseek(file.get(), sizeof header, SEEK_SET);
    qmx::CBitFileReader fileReader(file.get());
    qmx::CBitReader memoryReader(stream.data() + sizeof header, stream.size() - sizeof header);
    qmx::CBitReader& reader =
        from == ReadFrom::file ? static_cast<qmx::CBitReader&>(fileReader) : memoryReader;
    Decoded decoded;
    qmx::dispatchSamples(
        header, qmx::MostBitsOfShort::inFiles,
        [&]<class T, class P>() {
            decoded = decodeAs<T>(header, reader, extra);
            return 0;
        },
        [] { return 1; });
    return decoded;
}

}  // namespace test
