#include "container/CompressDriver.h"

#include <algorithm>
#include <memory>

#include "bitstream/CBitFileWriter.h"
#include "bitstream/Status.h"
#include "container/Budget.h"
#include "container/ColourTransform.h"
#include "container/DriverMessages.h"
#include "container/FileIo.h"
#include "image/Interleave.h"
#include "wavelet/CFilter5_3.h"
#include "wavelet/CWaveletEncoder.h"

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
/// ends the stream, which is what a budget is for.
void writeCoefficients(IWaveletEncoder& encoder, CBitWriter& writer, int extra) {
    for (int call = 0; call < 2; ++call) {
        try {
            if (encoder.writeWavelet(writer, extra) != kSuspended) return;
        } catch (int) {
            return;
        }
    }
}

/// Builds the stream in memory, then writes it in one piece.
void writeBudgeted(IWaveletEncoder& encoder, std::FILE* out, std::uint64_t budgetBytes,
                   std::uint64_t boundBytes, int extra) {
    // Room that no complete stream can fill need not exist.
    const std::size_t roomBytes = std::min(budgetBytes, boundBytes);
    const auto buffer = std::make_unique_for_overwrite<unsigned char[]>(roomBytes);
    CBitWriter writer(buffer.get(), roomBytes);
    writeCoefficients(encoder, writer, extra);
    const std::uint64_t totalBits = writer.getTotal();
    const std::uint64_t totalBytes = (totalBits + 7) / 8;
    std::printf(kTotals, static_cast<ssize_t>(totalBits), static_cast<ssize_t>(totalBytes),
                static_cast<long>(budgetBytes));
    writeAll(out, FileRole::output, buffer.get(), totalBytes);
}

}  // namespace

template <class T, class P>
int compress(TKHeader header, std::FILE* in, std::FILE* out, double rate, bool upper, int extra) {
    FilePtr rawFile(in);
    FilePtr streamFile(out);
    CImageData<T> image(header.xSize, header.ySize, header.planes());
    CFilter5_3<T> filter;
    CWaveletEncoder<T> encoder(&image, &filter, false);

    readRaw<T, P>(image, std::move(rawFile), upper);
    if (header.bytesPerPixel == 3) {
        std::puts(kForwardColour);
        transformColours(image);
    }
    std::puts(kTransforming);
    encoder.transform();
    std::puts(kWriting);
    if (upper) {
        writeBudgeted(encoder, streamFile.get(), streamBudgetBytes(header, rate),
                      completeStreamBoundBytes(header, kSampleBits<T>), extra);
    } else {
        const auto writer = std::make_unique<CBitFileWriter>(streamFile.get());
        writeCoefficients(encoder, *writer, extra);
    }
    closeOutput(std::move(streamFile));
    return 0;
}

template int compress<short, unsigned char>(TKHeader, std::FILE*, std::FILE*, double, bool, int);
template int compress<short, unsigned short>(TKHeader, std::FILE*, std::FILE*, double, bool, int);
template int compress<int, unsigned short>(TKHeader, std::FILE*, std::FILE*, double, bool, int);

}  // namespace qmx
