#include "container/DecompressDriver.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include "bitstream/CBitFileReader.h"
#include "bitstream/Status.h"
#include "bitstream/Throwing.h"
#include "coding/decode/DecodeRows.h"
#include "container/CPixelSink.h"
#include "container/DriverMessages.h"
#include "container/FileIo.h"
#include "container/ImageJob.h"
#include "container/MemoryPolicy.h"
#include "container/Suspension.h"

namespace qmx {
namespace {

/// Writes rows to a file as they come.
template <class T>
class CRawFileSink final : public IRowSink<T> {
public:
    CRawFileSink(const TKHeader& header, const CSampleLimit<T>& sampleLimit, std::FILE* rawFile)
        : limit(sampleLimit),
          bytesPerPixel(header.bytesPerPixel),
          rowBytes(header.rawRowBytes()),
          row(std::make_unique_for_overwrite<unsigned char[]>(rowBytes)),
          file(rawFile) {}

    bool take(const CImageData<T>& rows, int slot, int) override {
        storeRow(rows, slot, bytesPerPixel, limit, row.get());
        if (std::fwrite(row.get(), 1, rowBytes, file) != rowBytes) throwEndOfStream();
        return true;
    }

private:
    CSampleLimit<T> limit;
    int bytesPerPixel;
    std::size_t rowBytes;
    std::unique_ptr<unsigned char[]> row;
    std::FILE* file;
};

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

/// Reads the section headers. Returns: the result of the decoder, which they decide.
template <class T>
int readSections(CReceivedSections<T>& sections, CBitReader& in, int resumeRow, int rowOrSections) {
    std::printf(kReadingStream, kSampleBits<T>);
    const int result = sections.read(in, std::max(rowOrSections, 0));
    // Quirk 12: a decoder that was suspended no longer knows that its stream ended early.
    return isUsable(result) && resumeRow != 0 ? kComplete : result;
}

/// From file to file, row by row.
template <class T>
int decompressRows(CReceivedSections<T>& sections, const TKHeader& header, std::FILE* in,
                   std::FILE* out, int rowOrSections) {
    CBitFileReader reader(in);
    const int resumeRow = rowBehindSuspension(rowOrSections, header);
    const int result = readSections(sections, reader, resumeRow, rowOrSections);
    checkInput(in);
    if (!isUsable(result)) return refuse(result);
    announceTransforms(header);
    std::puts(kWriting);
    CRawFileSink<T> rows(header, limitOf<T>(result, header), out);
    decodeRows(sections, rows, {resumeRow});
    checkInput(in);
    return 0;
}

/// The whole stream is read at once, and the whole image is written at once.
template <class T>
int decompressStaged(CReceivedSections<T>& sections, const TKHeader& header, FilePtr in,
                     std::FILE* out, int rowOrSections) {
    std::puts(kReadingToMemory);
    const FileBytes stream = readRest(in.get());
    in.reset();
    CBitReader reader(stream.bytes.get(), stream.sizeBytes);
    const int resumeRow = rowBehindSuspension(rowOrSections, header);
    const int result = readSections(sections, reader, resumeRow, rowOrSections);
    if (!isUsable(result)) return refuse(result);
    announceTransforms(header);
    std::printf(kCopying, rawSampleBits(header));
    const auto image = std::make_unique_for_overwrite<unsigned char[]>(header.rawBytes());
    CPixelSink<T> rows(header, limitOf<T>(result, header), image.get(), header.rawRowBytes());
    decodeRows(sections, rows, {resumeRow});
    std::puts(kWriting);
    writeAll(out, FileRole::output, image.get(), header.rawBytes());
    return 0;
}

}  // namespace

template <class T>
int decompress(TKHeader header, std::FILE* in, std::FILE* out, bool staged, int rowOrSections) {
    FilePtr streamFile(in);
    FilePtr rawFile(out);
    requireMemoryForPlanes<T>(header);
    streamFile = makeSeekable(std::move(streamFile), &header, sizeof header);
    CReceivedSections<T> sections(shapeOf(header), std::pmr::new_delete_resource());
    const int status =
        staged ? decompressStaged(sections, header, std::move(streamFile), out, rowOrSections)
               : decompressRows(sections, header, streamFile.get(), out, rowOrSections);
    if (status == 0) closeOutput(std::move(rawFile));
    return status;
}

template int decompress<short>(TKHeader, std::FILE*, std::FILE*, bool, int);
template int decompress<int>(TKHeader, std::FILE*, std::FILE*, bool, int);

}  // namespace qmx
