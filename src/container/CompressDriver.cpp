#include "container/CompressDriver.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "bitstream/CBitFileWriter.h"
#include "bitstream/Status.h"
#include "bitstream/Throwing.h"
#include "coding/encode/CWaveletEncoder.h"
#include "container/Budget.h"
#include "container/ColourTransform.h"
#include "container/DriverMessages.h"
#include "container/FileIo.h"
#include "container/RawPixels.h"
#include "image/Interleave.h"
#include "wavelet/CFilter5_3.h"

namespace qmx {
namespace {

/// Reads the whole raw file at once. Samples that a short file lacks are 0.
template <class T, class P>
void readStaged(CImageData<T>& image, std::FILE* in) {
    std::printf(kReadingRaw, kSampleBits<P>);
    const std::size_t rowSamples =
        static_cast<std::size_t>(image.x) * static_cast<std::size_t>(image.planes);
    const std::size_t samples = rowSamples * static_cast<std::size_t>(image.y);
    const auto staging = std::make_unique_for_overwrite<P[]>(samples);
    auto* bytes = reinterpret_cast<unsigned char*>(staging.get());
    const std::size_t got = readUpTo(in, bytes, samples * sizeof(P));
    std::fill(bytes + got, bytes + samples * sizeof(P), static_cast<unsigned char>(0));
    std::printf(kCopying, kSampleBits<T>);
    for (int r = 0; r < image.y; ++r)
        deinterleaveRow<P>(staging.get() + static_cast<std::size_t>(r) * rowSamples, image, r);
}

template <class T, class P>
void readRaw(CImageData<T>& image, FilePtr in, bool staged) {
    if (staged) {
        readStaged<T, P>(image, in.get());
    } else {
        std::printf(kReadingRaw, kSampleBits<T>);
        image.template rawReadT<P>(in.get());
    }
}

/// Runs the coefficient encoder, once more if the first call was suspended. A writer that is full
/// ends the stream, which is what a budget is for. Returns: whether it was suspended.
bool writeCoefficients(IWaveletEncoder& encoder, CBitWriter& writer, int extra) {
    bool wasSuspended = false;
    try {
        wasSuspended = encoder.writeWavelet(writer, extra) == kSuspended;
        if (wasSuspended) encoder.writeWavelet(writer, extra);  // Quirk 10: with the same number
    } catch (int) {
        // The caller knows the writer's total.
    }
    return wasSuspended;
}

/// Returns: whether a rate leaves less than the complete stream takes.
template <class T>
bool asksForLoss(const CWaveletEncoder<T>& encoder, const TKHeader& header, double rate) {
    return rate != 0.0 && streamBudgetBytes(header, rate) < (encoder.getStreamBits() + 7) / 8;
}

/// Sends the stream to the file while it is made. Returns: what it loses.
template <class T>
LossReport writeComplete(CWaveletEncoder<T>& encoder, const TKHeader& header, std::FILE* out,
                         double rate, int extra) {
    StreamFate fate;
    {
        const auto writer = std::make_unique<CBitFileWriter>(out);
        fate.wasSuspended = writeCoefficients(encoder, *writer, extra);
    }
    fate.isLossAskedFor = asksForLoss(encoder, header, rate);
    return findLoss(encoder, header, fate);
}

/// Builds the stream in memory, then writes it in one piece. Returns: what it loses without being
/// asked to, by a rate.
template <class T>
LossReport writeBudgeted(CWaveletEncoder<T>& encoder, const TKHeader& header, std::FILE* out,
                         double rate, int extra) {
    // Room that no complete stream can fill need not exist.
    const std::uint64_t budgetBytes = streamBudgetBytes(header, rate);
    const std::size_t roomBytes =
        std::min(budgetBytes, completeStreamBoundBytes(header, kSampleBits<T>));
    const auto buffer = std::make_unique_for_overwrite<unsigned char[]>(roomBytes);
    CBitWriter writer(buffer.get(), roomBytes);
    StreamFate fate;
    fate.wasSuspended = writeCoefficients(encoder, writer, extra);
    const std::uint64_t totalBits = writer.getTotal();
    fate.stream = buffer.get();
    fate.streamBytes = (totalBits + 7) / 8;
    std::printf(kTotals, static_cast<ssize_t>(totalBits), static_cast<ssize_t>(fate.streamBytes),
                static_cast<long>(budgetBytes));
    writeAll(out, FileRole::output, buffer.get(), fate.streamBytes);
    fate.isLossAskedFor = asksForLoss(encoder, header, rate);
    return findLoss(encoder, header, fate);
}

/// Rows of a raw file as they come.
template <class T, class P>
class CRawFileSource final : public IRowSource<T> {
public:
    CRawFileSource(const TKHeader& header, std::FILE* rawFile)
        : rowBytes(header.rawRowBytes()),
          row(std::make_unique_for_overwrite<unsigned char[]>(rowBytes)),
          file(rawFile) {}

    void load(CImageData<T>& rows, int slot, int) override {
        if (std::fread(row.get(), 1, rowBytes, file) < rowBytes) throwEndOfStream();
        loadRow<P>(rows, slot, row.get());
    }

private:
    std::size_t rowBytes;
    std::unique_ptr<unsigned char[]> row;
    std::FILE* file;
};

/// Reads an image once more, to compare it with what its stream restores. Returns: what that loses.
template <class T, class P>
LossReport compareAgain(CImageData<T>& image, CFilter<T>& filter, const TKHeader& header,
                        std::FILE* in, std::int64_t place, double rate) {
    returnTo(in, place);
    image.template rawReadT<P>(in);
    transformColours(image);
    CWaveletEncoder<T> encoder(&image, &filter, false);
    encoder.transform();
    encoder.codeCoefficients(0);
    StreamFate fate;
    fate.isLossAskedFor = asksForLoss(encoder, header, rate);
    return findLoss(encoder, header, fate);
}

void announceTransforms(const TKHeader& header) {
    if (header.bytesPerPixel == 3) std::puts(kForwardColour);
    std::puts(kTransforming);
}

/// From file to file without planes. The same as the long way, with the same lines in their order.
/// Returns: what the stream loses, unless it has to be compared.
template <class T, class P>
std::optional<LossReport> compressByRows(CWaveletEncoder<T>& encoder, const TKHeader& header,
                                         std::FILE* in, std::FILE* out) {
    std::printf(kReadingRaw, kSampleBits<T>);
    CRawFileSource<T, P> rows(header, in);
    encoder.codeRows(rows);
    announceTransforms(header);
    std::puts(kWriting);
    try {
        CBitFileWriter writer(out);
        encoder.writeStream(writer);
    } catch (int) {
        // As in writeCoefficients.
    }
    if (hasDoubts(encoder, header)) return std::nullopt;
    return findLoss(encoder, header, {});
}

}  // namespace

template <class T, class P>
int compress(TKHeader header, std::FILE* in, std::FILE* out, double rate, bool upper, int extra,
             LossReport* loss) {
    FilePtr rawFile(in);
    FilePtr streamFile(out);
    // Without memory for its planes an image is refused, also where they are never touched.
    CImageData<T> image(header.xSize, header.ySize, header.planes());
    CFilter5_3<T> filter;
    CWaveletEncoder<T> encoder(&image, &filter, false);
    LossReport report;
    const std::int64_t place = placeToReturn(in);
    if (!upper && extra == 0 && place >= 0 && encoder.gainsByRows()) {
        const auto found = compressByRows<T, P>(encoder, header, in, out);
        report = found ? *found : compareAgain<T, P>(image, filter, header, in, place, rate);
    } else {
        readRaw<T, P>(image, std::move(rawFile), upper);
        transformColours(image);
        announceTransforms(header);
        encoder.transform();
        std::puts(kWriting);
        report = upper ? writeBudgeted(encoder, header, out, rate, extra)
                       : writeComplete(encoder, header, out, rate, extra);
    }
    closeOutput(std::move(streamFile));
    if (loss != nullptr) *loss = report;
    return 0;
}

template int compress<short, unsigned char>(TKHeader, std::FILE*, std::FILE*, double, bool, int,
                                            LossReport*);
template int compress<short, unsigned short>(TKHeader, std::FILE*, std::FILE*, double, bool, int,
                                             LossReport*);
template int compress<int, unsigned short>(TKHeader, std::FILE*, std::FILE*, double, bool, int,
                                           LossReport*);

}  // namespace qmx
