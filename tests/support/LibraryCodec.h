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
#include "support/Outcome.h"

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

inline constexpr std::size_t kHeaderBytes = sizeof(qmx::TKHeader);

/// stream: at least 16 bytes.
inline qmx::TKHeader headerOf(const Bytes& stream) {
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    return header;
}

/// Returns: the bytes of a header, then others.
inline Bytes headed(const qmx::TKHeader& header, const Bytes& others) {
    Bytes bytes(sizeof header + others.size());
    std::memcpy(bytes.data(), &header, sizeof header);
    std::copy(others.begin(), others.end(), bytes.begin() + sizeof header);
    return bytes;
}

template <class T>
Bytes encodeAs(const RawImage& image, std::uint64_t roomBytes, int extra) {
    const qmx::TKHeader header = headerOf(image);
    qmx::CPixelsInMemory pixels(image.bytes.data(), header.rawRowBytes());
    qmx::CPixelSource<T> source(pixels, header.bytesPerPixel);
    qmx::CCodedSections<T> sections(qmx::shapeOf(header), std::pmr::new_delete_resource());
    qmx::encodeRows(source, sections, {false, qmx::rowBehindSuspension(extra, header)});
    Bytes stream = headed(header, Bytes(roomBytes));
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

enum class ReadFrom { memory, file };

template <class T>
Outcome decodeAs(const qmx::TKHeader& header, qmx::CBitReader& reader, int extra) {
    const int resumeRow = qmx::rowBehindSuspension(extra, header);
    qmx::CReceivedSections<T> sections(qmx::shapeOf(header), std::pmr::new_delete_resource());
    Outcome decoded;
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
inline Outcome decode(const Bytes& stream, ReadFrom from = ReadFrom::memory, int extra = 0) {
    const qmx::TKHeader header = headerOf(stream);
    const File file = fileOf(stream);
    std::fseek(file.get(), sizeof header, SEEK_SET);
    qmx::CBitFileReader fileReader(file.get());
    qmx::CBitReader memoryReader(stream.data() + sizeof header, stream.size() - sizeof header);
    qmx::CBitReader& reader =
        from == ReadFrom::file ? static_cast<qmx::CBitReader&>(fileReader) : memoryReader;
    Outcome decoded;
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
