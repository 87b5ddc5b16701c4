#pragma once

#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "container/DecompressDriver.h"
#include "support/LibraryCodec.h"

// Both ways of the decompression driver on one stream, in this process.

namespace test {

/// Sends standard output to nowhere while it lives.
class Silence {
public:
    Silence() : saved(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        std::FILE* nowhere = std::fopen("/dev/null", "w");
        dup2(fileno(nowhere), STDOUT_FILENO);
        std::fclose(nowhere);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() {
        std::fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        close(saved);
    }

private:
    int saved;
};

inline constexpr std::size_t kHeaderBytes = sizeof(qmx::TKHeader);

/// What the tool leaves: its exit status and its output file.
struct Outcome {
    int status = -1;
    Bytes bytes;
};

/// Decompresses a stream of at least 16 bytes in this process.
inline Outcome decompressHere(const Bytes& stream, bool upper, int extra = 0) {
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    Bytes copy = stream;
    std::FILE* in = fmemopen(copy.data(), copy.size(), "rb");
    char* written = nullptr;
    std::size_t writtenBytes = 0;
    std::FILE* out = open_memstream(&written, &writtenBytes);
    std::fseek(in, sizeof header, SEEK_SET);
    const Silence silence;
    Outcome decoded;
    decoded.status = qmx::dispatchCoefficients(
        header, qmx::MostBitsOfShort::inFiles,
        [&]<class T>() { return qmx::decompress<T>(header, in, out, upper, extra); },
        [=] {
            std::fclose(in);
            std::fclose(out);
            return -1;
        });
    decoded.bytes.assign(written, written + writtenBytes);
    std::free(written);
    return decoded;
}

inline std::size_t rawBytes(const Bytes& stream) {
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    return std::size_t{header.xSize} * header.ySize * header.bytesPerPixel;
}

/// Checks that both ways of decompression agree. Returns: their exit status.
inline int expectSameImage(const Bytes& stream, int extra = 0) {
    const Outcome lower = decompressHere(stream, false, extra);
    const Outcome upper = decompressHere(stream, true, extra);
    EXPECT_EQ(lower.status, upper.status);
    EXPECT_TRUE(sameBytes(lower.bytes, upper.bytes));
    EXPECT_TRUE(lower.status == 0 || lower.status == 1) << lower.status;
    EXPECT_EQ(lower.bytes.size(), lower.status == 0 ? rawBytes(stream) : 0U);
    return lower.status;
}

struct Size {
    int width;
    int height;
};

/// Returns: images of all sample types.
inline std::vector<RawImage> imagesOf(Content content, const std::vector<Size>& sizes) {
    constexpr int kBytesAndBits[][2] = {{1, 8}, {3, 8}, {2, 9}, {2, 12}, {2, 13}, {2, 16}};
    std::vector<RawImage> images;
    for (const auto& [bytes, bits] : kBytesAndBits)
        for (const Size size : sizes)
            images.push_back(makeImage(content, bytes, bits, size.width, size.height));
    return images;
}

inline std::string nameOf(const RawImage& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels of " +
           std::to_string(image.bytesPerPixel) + " bytes, " + std::to_string(image.bitsPerPixel) +
           " bits";
}

}  // namespace test
