#include "container/CompressDriver.h"

#include <algorithm>
#include <memory>

#include "bitstream/CBitFileWriter.h"
#include "coding/encode/EncodeRows.h"
#include "container/Budget.h"
#include "container/CRawFileRows.h"
#include "container/DriverMessages.h"
#include "container/FileIo.h"
#include "container/MemoryPolicy.h"
#include "container/Suspension.h"

namespace qmx {
namespace {

using ByteArray = std::unique_ptr<unsigned char[]>;

/// The whole raw file, read at once. Samples that a short file lacks are 0.
class CStagedRows final : public IPixelRows {
public:
    CStagedRows(const TKHeader& header, FilePtr rawFile)
        : bytes(std::make_unique_for_overwrite<unsigned char[]>(header.rawBytes())),
          pixels(bytes.get(), header.rawRowBytes()) {
        const std::size_t got = readUpTo(rawFile.get(), bytes.get(), header.rawBytes());
        std::fill(bytes.get() + got, bytes.get() + header.rawBytes(),
                  static_cast<unsigned char>(0));
    }

    const unsigned char* row(int r) override { return pixels.row(r); }

private:
    ByteArray bytes;
    CPixelsInMemory pixels;
};

template <class T>
std::unique_ptr<IPixelRows> openRows(const TKHeader& header, FilePtr rawFile, bool staged) {
    if (!staged) {
        std::printf(kReadingRaw, kSampleBits<T>);
        return std::make_unique<CRawFileRows>(header, std::move(rawFile));
    }
    std::printf(kReadingRaw, rawSampleBits(header));
    auto rows = std::make_unique<CStagedRows>(header, std::move(rawFile));
    std::printf(kCopying, kSampleBits<T>);
    return rows;
}

void announceTransforms(const TKHeader& header) {
    if (header.bytesPerPixel == 3) std::puts(kForwardColour);
    std::puts(kTransforming);
    std::puts(kWriting);
}

/// Returns: whether a rate leaves less than the complete stream takes.
bool asksForLoss(const CodedFacts& facts, const TKHeader& header, double rate) {
    return rate != 0.0 && streamBudgetBytes(header, rate) < facts.streamBytes();
}

/// Returns: the complete stream, for one that went to a file.
template <class T>
ByteArray writeAgain(CCodedSections<T>& sections) {
    const std::size_t streamBytes = sections.facts().streamBytes();
    auto bytes = std::make_unique_for_overwrite<unsigned char[]>(streamBytes);
    CBitWriter writer(bytes.get(), streamBytes);
    sections.writeStream(writer);
    return bytes;
}

/// Sends the stream to the file while it is made. Returns: what it loses.
template <class T>
LossReport writeComplete(CCodedSections<T>& sections, const ImageJob& job, std::FILE* out,
                         StreamFate fate) {
    {
        CBitFileWriter writer(out);
        sections.writeWhatFits(writer);
    }
    ByteArray again;
    if (hasDoubts(sections.facts(), job.header, fate)) again = writeAgain(sections);
    const CodedFacts& facts = sections.facts();
    fate.stream = {again.get(), facts.streamBytes(), facts.misreadBit};
    return findLoss(job, MostBitsOfShort::inFiles, facts, fate);
}

/// Builds the stream in memory, then writes it in one piece. Returns: what it loses.
template <class T>
LossReport writeBudgeted(CCodedSections<T>& sections, const ImageJob& job, std::FILE* out,
                         std::uint64_t budgetBytes, StreamFate fate) {
    // Room that the stream does not fill need not exist.
    const std::size_t roomBytes = std::min(budgetBytes, sections.facts().streamBytes());
    const auto buffer = std::make_unique_for_overwrite<unsigned char[]>(roomBytes);
    CBitWriter writer(buffer.get(), roomBytes);
    sections.writeWhatFits(writer);
    const std::uint64_t totalBits = writer.getTotal();
    fate.stream = {buffer.get(), (totalBits + 7) / 8, sections.facts().misreadBit};
    std::printf(kTotals, static_cast<ssize_t>(totalBits),
                static_cast<ssize_t>(fate.stream.sizeBytes), static_cast<long>(budgetBytes));
    writeAll(out, FileRole::output, buffer.get(), fate.stream.sizeBytes);
    return findLoss(job, MostBitsOfShort::inFiles, sections.facts(), fate);
}

}  // namespace

template <class T>
LossReport compress(TKHeader header, std::FILE* in, std::FILE* out, double rate, bool staged,
                    int rowOrSections) {
    FilePtr rawFile(in);
    FilePtr streamFile(out);
    requireMemoryForPlanes<T>(header);
    CCodedSections<T> sections(shapeOf(header), std::pmr::new_delete_resource());
    const int resumeRow = rowBehindSuspension(rowOrSections, header);
    const auto pixels = openRows<T>(header, std::move(rawFile), staged);
    CPixelSource<T> source(*pixels, header.bytesPerPixel);
    encodeRows(source, sections, {false, resumeRow});
    announceTransforms(header);
    const ImageJob job{header, *pixels};
    StreamFate fate;
    fate.wasSuspended = resumeRow != 0;
    fate.isLossAskedFor = asksForLoss(sections.facts(), header, rate);
    fate.stream.sizeBytes = sections.facts().streamBytes();
    const LossReport report =
        staged ? writeBudgeted(sections, job, out, streamBudgetBytes(header, rate), fate)
               : writeComplete(sections, job, out, fate);
    closeOutput(std::move(streamFile));
    return report;
}

template LossReport compress<short>(TKHeader, std::FILE*, std::FILE*, double, bool, int);
template LossReport compress<int>(TKHeader, std::FILE*, std::FILE*, double, bool, int);

}  // namespace qmx
