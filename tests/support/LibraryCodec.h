#pragma once

#include <cstdio>
#include <memory>

#include "bitstream/CBitFileReader.h"
#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "coding/encode/EncodeRows.h"
#include "container/Budget.h"
#include "container/CPixelSink.h"
#include "container/CoefficientDispatch.h"
#include "container/ImageJob.h"
#include "container/Suspension.h"
#include "support/TestImages.h"

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

template <class T>
Bytes encodeAs(const RawImage& image, std::uint64_t roomBytes, int extra) {
    const qmx::TKHeader header = headerOf(image);
    qmx::CPixelsInMemory pixels(image.bytes.data(), header.rawRowBytes());
    qmx::CPixelSource<T> source(pixels, header.bytesPerPixel);
    qmx::CCodedSections<T> sections(qmx::shapeOf(header), std::pmr::new_delete_resource());
    qmx::encodeRows(source, sections, {false, qmx::rowBehindSuspension(extra, header)});
    Bytes stream(sizeof header + roomBytes);
    std::memcpy(stream.data(), &header, sizeof header);
    qmx::CBitWriter writer(stream.data() + sizeof header, roomBytes);
    sections.writeWhatFits(writer);
    stream.resize(sizeof header + (writer.getTotal() + 7) / 8);
    return stream;
}

/// Returns: the stream file of an image, complete or cut to roomBytes behind the header.
inline Bytes encode(const RawImage& image, std::uint64_t roomBytes = ~std::uint64_t{0},
                    int extra = 0) {
    const std::uint64_t room =
        std::min(roomBytes, qmx::completeStreamBoundBytes(headerOf(image), 32));
    Bytes stream;
    qmx::dispatchCoefficients(
        headerOf(image), qmx::MostBitsOfShort::inFiles,
        [&]<class T>() {
            stream = encodeAs<T>(image, room, extra);
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
    const int resumeRow = qmx::rowBehindSuspension(extra, header);
    qmx::CReceivedSections<T> sections(qmx::shapeOf(header), std::pmr::new_delete_resource());
    Decoded decoded;
    decoded.status = sections.read(reader, std::max(extra, 0));
    if (!qmx::isUsable(decoded.status)) return decoded;
    if (resumeRow != 0) decoded.status = qmx::kComplete;
    decoded.bytes.resize(header.rawBytes());
    qmx::CPixelSink<T> pixels(header, qmx::limitOf<T>(decoded.status, header), decoded.bytes.data(),
                              header.rawRowBytes());
    EXPECT_TRUE(qmx::decodeRows(sections, pixels, {resumeRow}));
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
    qmx::dispatchCoefficients(
        header, qmx::MostBitsOfShort::inFiles,
        [&]<class T>() {
            decoded = decodeAs<T>(header, reader, extra);
            return 0;
        },
        [] { return 1; });
    return decoded;
}

}  // namespace test
