#pragma once

#include "api/CTeskCompressor.h"
#include "api/CTeskDecompressor.h"
#include "api/CompressorLoss.h"
#include "support/LibraryCodec.h"

// The in-memory codec objects on images and streams that are byte strings.

namespace test {

/// A budget that cuts no image of these tests.
inline constexpr unsigned long kAmpleBudget = 1UL << 24;

/// What a compressor asked of its memory, and how its memory behaves.
struct BlockLog {
    std::vector<unsigned long> asked;
    int freed = 0;
    /// Bytes by which blocks miss their alignment.
    unsigned long shift = 0;
    bool isEmpty = false;
};

/// A compressor whose blocks come from elsewhere.
class LoggingCompressor final : public qmx::CTeskCompressor {
public:
    LoggingCompressor(const RawImage& image, unsigned long budgetBytes, bool ownsBlock,
                      BlockLog& blockLog)
        : CTeskCompressor(image.width, image.height, image.bitsPerPixel, image.bytesPerPixel,
                          image.bytes.data(), budgetBytes, ownsBlock),
          log(blockLog) {}
    ~LoggingCompressor() override { releaseBlock(); }

    void* allocBlock(unsigned long sizeBytes) override {
        log.asked.push_back(sizeBytes);
        if (log.isEmpty) return nullptr;
        void* block = CTeskCompressor::allocBlock(sizeBytes + log.shift);
        return static_cast<unsigned char*>(block) + log.shift;
    }
    void freeBlock(void* block) override {
        ++log.freed;
        CTeskCompressor::freeBlock(static_cast<unsigned char*>(block) - log.shift);
    }

private:
    BlockLog& log;
};

inline Bytes streamOf(const qmx::CTeskCompressor& compressor) {
    const unsigned char* block = compressor.getBlock();
    return block == nullptr ? Bytes() : Bytes(block, block + compressor.getStreamSize());
}

/// budgetBytes: 0 lets the object choose the size of its block.
inline Outcome compressObject(const RawImage& image, unsigned long budgetBytes = kAmpleBudget) {
    qmx::CTeskCompressor compressor(image.width, image.height, image.bitsPerPixel,
                                    image.bytesPerPixel, image.bytes.data(), budgetBytes, true);
    Outcome outcome;
    outcome.status = compressor.compress();
    outcome.bytes = streamOf(compressor);
    if (!outcome.bytes.empty()) outcome.report = qmx::findLoss(compressor, budgetBytes != 0);
    return outcome;
}

inline std::size_t pixelBytesOf(qmx::CTeskDecompressor& decompressor) {
    return static_cast<std::size_t>(decompressor.getXSize()) *
           static_cast<std::size_t>(decompressor.getYSize()) *
           static_cast<std::size_t>(decompressor.getBytesPerPixel());
}

inline Outcome decompressObject(const Bytes& stream) {
    qmx::CTeskDecompressor decompressor(stream.data(), stream.size());
    Outcome decoded;
    decoded.bytes.resize(pixelBytesOf(decompressor));
    decoded.status = decompressor.decompress(decoded.bytes.data(), decoded.bytes.size());
    if (!qmx::isUsable(decoded.status)) decoded.bytes.clear();
    return decoded;
}

/// Returns: a stream file of noise, which may be anything.
inline Bytes noiseStream(const qmx::TKHeader& header, std::size_t noiseBytes, std::uint64_t seed) {
    Random random(seed);
    Bytes noise(noiseBytes);
    for (unsigned char& byte : noise)
        byte = static_cast<unsigned char>(random.below(256));
    if (!noise.empty()) noise[0] %= 12;  // a top plane as images have it
    return headed(header, noise);
}

}  // namespace test
