#pragma once

#include <cstdlib>

#include "api/CompressorLoss.h"
#include "container/CompressDriver.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/DriverAgreement.h"

// What compression says about a stream that it wrote without a requested rate, and what decoding it
// gives.

namespace test {

/// The ways to compress that say so. Each has a decoder of its own.
enum class Way { fileLower, fileUpper, object, codec };

inline constexpr Way kAllWays[] = {Way::fileLower, Way::fileUpper, Way::object, Way::codec};

inline const char* nameOf(Way way) {
    constexpr const char* kNames[] = {"file lower", "file upper", "object", "C interface"};
    return kNames[static_cast<int>(way)];
}

/// A stream file and what was said about it.
struct Verdict {
    bool saysLoss = false;
    Bytes stream;
    /// Numbers only from the ways that know them: not from the C interface.
    qmx::LossReport report;
};

/// What the file drivers are told besides the image.
struct DriverWish {
    double rate = 0.0;
    int extra = 0;
};

/// Runs the compression driver from memory to memory; its lines go to standard output.
inline Verdict judgeFile(const RawImage& image, bool upper, DriverWish wish = {}) {
    const qmx::TKHeader header = headerOf(image);
    Bytes raw = image.bytes;
    raw.push_back(0);  // files in memory have at least one byte; what follows an image is not read
    std::FILE* in = fmemopen(raw.data(), raw.size(), "rb");
    char* written = nullptr;
    std::size_t writtenBytes = 0;
    std::FILE* out = open_memstream(&written, &writtenBytes);
    std::fwrite(&header, 1, sizeof header, out);
    Verdict verdict;
    qmx::dispatchCoefficients(
        header, qmx::MostBitsOfShort::inFiles,
        [&]<class T>() {
            return qmx::compress<T>(header, in, out, wish.rate, upper, wish.extra, &verdict.report);
        },
        [] { return -1; });
    verdict.stream.assign(written, written + writtenBytes);
    std::free(written);
    verdict.saysLoss = verdict.report.loss != qmx::Loss::none;
    return verdict;
}

/// Lets the in-memory object choose the size of its block.
inline Verdict judgeObject(const RawImage& image) {
    qmx::CTeskCompressor compressor(image.width, image.height, image.bitsPerPixel,
                                    image.bytesPerPixel, image.bytes.data(), 0, true);
    compressor.compress();
    Verdict verdict;
    verdict.stream = streamOf(compressor);
    verdict.report = qmx::findLoss(compressor);
    verdict.saysLoss = verdict.report.loss != qmx::Loss::none;
    return verdict;
}

inline Verdict judgeCall(const RawImage& image) {
    const Codec codec = makeCodecWithFlags(TESK_PLAIN);
    const Call call = compressCall(codec.get(), image);
    EXPECT_NE(call.result.loss, TESK_LOSS_UNCHECKED);
    return {call.result.loss != TESK_LOSS_NONE, call.bytes, {}};
}

inline Verdict judge(Way way, const RawImage& image) {
    switch (way) {
        case Way::fileLower:
        case Way::fileUpper:
            return judgeFile(image, way == Way::fileUpper);
        case Way::object:
            return judgeObject(image);
        case Way::codec:
            return judgeCall(image);
    }
    return {};
}

/// Returns: what the decoder that belongs to a way makes of a stream; nothing for an invalid one.
inline Bytes decodedBy(Way way, const Bytes& stream) {
    switch (way) {
        case Way::fileLower:
        case Way::fileUpper:
            return decompressHere(stream, way == Way::fileUpper).bytes;
        case Way::object:
            return decompressObject(stream).bytes;
        case Way::codec:
            return decompressCall(makeCodecWithFlags(TESK_PLAIN).get(), stream).bytes;
    }
    return {};
}

/// Returns: whether a stream without its last bytes, more than are padding, passes for the whole.
inline bool hasFalseEnd(const Bytes& stream) {
    constexpr std::size_t kMorePaddingThanThereIs = 3;
    const Bytes prefix = prefixOf(stream, stream.size() - kMorePaddingThanThereIs);
    return decompressCall(makeCodec().get(), prefix).status == TESK_OK;
}

inline bool comesBack(Way way, const Verdict& verdict, const RawImage& image) {
    if (decodedBy(way, verdict.stream) != image.bytes) return false;
    // The C interface promises more of a stream that loses nothing: it is known to be complete.
    return way != Way::codec ||
           (decompressCall(makeCodec().get(), verdict.stream).status == TESK_OK &&
            !hasFalseEnd(verdict.stream));
}

}  // namespace test
