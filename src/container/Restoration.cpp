#include "container/Restoration.h"

#include <algorithm>
#include <cstring>

#include "bitstream/CBitReader.h"
#include "bitstream/CBitWriter.h"
#include "bitstream/Status.h"
#include "coding/decode/CWaveletDecoder.h"
#include "coding/syntax/FoldedValue.h"
#include "wavelet/CFilter5_3.h"
#include "wavelet/LevelGeometry.h"
#include "wavelet/OutputConversion.h"

namespace qmx {
namespace {

template <class T>
std::uint64_t countOf(const CWaveletEncoder<T>& encoder, Loss loss) {
    switch (loss) {
        case Loss::wrappedCoefficient:
            return encoder.getLostCoefficients();
        case Loss::endlessRun:
            return encoder.getEndlessSections();
        case Loss::overlongSection:
            return encoder.getOverlongSections();
        default:
            return 0;
    }
}

/// Turns folded coefficients back into the samples that they were made from.
template <class T>
void unfoldAndUntransform(CImageData<T>& image, int levels, std::pmr::memory_resource* memory) {
    using Unsigned = std::make_unsigned_t<T>;
    for (int p = 0; p < image.planes; ++p)
        for (int r = 0; r < image.y; ++r)
            for (T *sample = image.row(p, r), *end = sample + image.x; sample != end; ++sample)
                *sample = unfold<T>(static_cast<Unsigned>(*sample));
    if (levels < 1) return;
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&image, &filter, false, memory);
    decoder.untransform();
}

template <class T>
bool haveSamePixels(const CImageData<T>& original, const CImageData<T>& decoded,
                    const TKHeader& header, int limitBits, std::pmr::memory_resource* memory) {
    const std::size_t rowBytes = header.rawRowBytes();
    const auto originalRow = makeArray<unsigned char>(rowBytes, memory);
    const auto decodedRow = makeArray<unsigned char>(rowBytes, memory);
    const SampleLimit<T> noLimit(0);
    const SampleLimit<T> limit(limitBits);
    for (int r = 0; r < header.ySize; ++r) {
        convertRow(original, r, header.bytesPerPixel, noLimit, originalRow.get());
        convertRow(decoded, r, header.bytesPerPixel, limit, decodedRow.get());
        if (std::memcmp(originalRow.get(), decodedRow.get(), rowBytes) != 0) return false;
    }
    return true;
}

/// Decodes stream and compares. Uses up the encoder's planes.
template <class T>
bool restores(CWaveletEncoder<T>& encoder, const TKHeader& header, const unsigned char* stream,
              std::uint64_t streamBytes) {
    std::pmr::memory_resource* memory = encoder.getMemory();
    CImageData<T> decoded(header.xSize, header.ySize, header.planes(), memory);
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&decoded, &filter, false, memory);
    CBitReader reader(stream, streamBytes);
    const int result = decoder.readWavelet(reader, 0);
    if (!isUsable(result)) return false;
    decoder.untransform();
    unfoldAndUntransform(encoder.getImage(), encoder.getLevels(), memory);
    const int limitBits = result == kCut ? header.bitsPerPixel : 0;
    return haveSamePixels(encoder.getImage(), decoded, header, limitBits, memory);
}

/// Returns: the complete stream, for one that is no longer in memory.
template <class T>
MemoryArray<unsigned char> makeAgain(CWaveletEncoder<T>& encoder, std::uint64_t streamBytes) {
    auto stream = makeArray<unsigned char>(streamBytes, encoder.getMemory());
    CBitWriter writer(stream.get(), streamBytes);
    encoder.writeStream(writer);
    return stream;
}

/// What a stream that a rate cut loses beyond that. Requires: report.reading is not whole.
template <class T>
LossReport lossOfCut(const CWaveletEncoder<T>& encoder, LossReport report) {
    if (report.reading == Reading::part) return report;
    report.loss = Loss::overlongSection;
    report.count = countOf(encoder, report.loss);
    return report;
}

/// Returns: the reason alone.
std::string reasonOf(const LossReport& report) {
    const std::string count = std::to_string(report.count);
    const bool one = report.count == 1;
    switch (report.loss) {
        case Loss::none:
            return "it does restore it";
        case Loss::sideOfOne:
            return "an image with a side of 1 pixel has no coefficients";
        case Loss::thinImage:
            return "decoders filter the longer side of an image with a side of 2 or 3 pixels";
        case Loss::wrappedCoefficient:
            return count + (one ? " coefficient does" : " coefficients do") +
                   " not fit 16 bits: samples exceed the bits/pixel";
        case Loss::endlessRun:
            return count + (one ? " section covers" : " sections cover") +
                   " more coefficients than a run can pass over";
        case Loss::overlongSection:
            return count + (one ? " section is longer than its length field can say"
                                : " sections are longer than their length fields can say");
        case Loss::suspension:
            return "coding was suspended, and later colour planes lack their first rows";
        case Loss::cut:
            return "no rate was given, but the stream was cut at " +
                   std::to_string(report.streamBytes) + " of " +
                   std::to_string(report.completeBytes) + " bytes";
    }
    return "";
}

}  // namespace

template <class T>
Loss suspectLoss(const CWaveletEncoder<T>& encoder, const TKHeader& header, bool wasSuspended,
                 bool wasCut) {
    const int shorter = std::min(header.xSize, header.ySize);
    const int longer = std::max(header.xSize, header.ySize);
    if (shorter == 0) return Loss::none;
    if (shorter == 1) return Loss::sideOfOne;
    if (encoder.getLostCoefficients() != 0) return Loss::wrappedCoefficient;
    if (encoder.getLevels() < 1 && longer >= kShortestLine) return Loss::thinImage;
    if (encoder.getEndlessSections() != 0) return Loss::endlessRun;
    if (encoder.getOverlongSections() != 0) return Loss::overlongSection;
    if (wasSuspended) return Loss::suspension;
    return wasCut ? Loss::cut : Loss::none;
}

bool isCertain(Loss loss) {
    return loss == Loss::none || loss == Loss::wrappedCoefficient || loss == Loss::endlessRun;
}

std::string describeLoss(const LossReport& report) {
    const bool isHopeless = report.loss == Loss::none || report.loss == Loss::sideOfOne;
    if (isHopeless) return reasonOf(report);
    const bool isDecoded = report.reading == Reading::whole || report.reading == Reading::part;
    return reasonOf(report) +
           (isDecoded ? "; the exact encode of the library (libtesk) restores the image"
                      : "; streams of the library (libtesk) open wherever they are cut");
}

template <class T>
bool hasDoubts(const CWaveletEncoder<T>& encoder, const TKHeader& header) {
    return !isCertain(suspectLoss(encoder, header));
}

template <class T>
LossReport findLoss(CWaveletEncoder<T>& encoder, const TKHeader& header, const StreamFate& fate) {
    LossReport report;
    const std::uint64_t completeBytes = (encoder.getStreamBits() + 7) / 8;
    WrittenStream written{fate.stream, fate.streamBytes, encoder.getMisreadBit()};
    if (fate.stream == nullptr) written.sizeBytes = completeBytes;
    report.completeBytes = sizeof header + completeBytes;
    report.streamBytes = sizeof header + written.sizeBytes;
    const bool wasCut = written.sizeBytes < completeBytes;
    if (wasCut && fate.isLossAskedFor) {
        report.reading = readingOf(header, written);
        // Without padding alone a stream is complete for decoders.
        if (report.reading != Reading::whole) return lossOfCut(encoder, report);
    }
    report.loss = suspectLoss(encoder, header, fate.wasSuspended, wasCut && !fate.isLossAskedFor);
    report.count = countOf(encoder, report.loss);
    if (isCertain(report.loss)) return report;

    MemoryArray<unsigned char> again;
    if (written.bytes == nullptr) {
        again = makeAgain(encoder, completeBytes);
        written = {again.get(), completeBytes, encoder.getMisreadBit()};
    }
    if (restores(encoder, header, written.bytes, written.sizeBytes)) {
        report.loss = Loss::none;
    } else if (fate.isLossAskedFor && readingOf(header, written) == Reading::refused) {
        report.reading = Reading::refused;
    }
    return report;
}

template Loss suspectLoss<short>(const CWaveletEncoder<short>&, const TKHeader&, bool, bool);
template Loss suspectLoss<int>(const CWaveletEncoder<int>&, const TKHeader&, bool, bool);
template bool hasDoubts<short>(const CWaveletEncoder<short>&, const TKHeader&);
template bool hasDoubts<int>(const CWaveletEncoder<int>&, const TKHeader&);
template LossReport findLoss<short>(CWaveletEncoder<short>&, const TKHeader&, const StreamFate&);
template LossReport findLoss<int>(CWaveletEncoder<int>&, const TKHeader&, const StreamFate&);

}  // namespace qmx
