#include <filesystem>
#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/LibraryCodec.h"
#include "support/TrailedStream.h"
#include "trailer/Trailer.h"

// Streams that restore their image do so with a trailer behind them.

namespace {

using test::Bytes;

/// Checks that decoders of files and of memory give the same pixels with a trailer as without one.
void expectSamePixels(const Bytes& stream, const Bytes& pixels) {
    const Bytes file = test::trailed(stream);
    const test::Codec codec = test::makeCodec();
    test::expectOutcome(TESK_OK, pixels, test::decompressCall(codec.get(), file));
    for (const auto from : {test::ReadFrom::memory, test::ReadFrom::file})
        test::expectOutcome(qmx::kComplete, pixels, test::decode(file, from));
    for (std::uint32_t levels = 1; levels <= 5; ++levels)
        test::expectSameOutcome(test::reduceCall(codec.get(), stream, levels),
                                test::reduceCall(codec.get(), file, levels));
}

void expectTrailerBehind(const Bytes& stream) {
    const Bytes file = test::trailed(stream);
    std::size_t length = 0;
    EXPECT_EQ(tesk_measure(file.data(), file.size(), &length), TESK_OK);
    EXPECT_EQ(length, stream.size());
    const qmx::CMemoryBytes bytes(file);
    const auto trailer = qmx::findTrailer(bytes, length);
    ASSERT_TRUE(trailer);
    EXPECT_EQ(trailer->boxes.size(), 2U);
    EXPECT_EQ(qmx::checksumOf(bytes, *trailer), trailer->crc);
}

/// Requires: name ends in .c.tk.
std::string rawNameOf(const std::string& name) {
    return name.substr(0, name.size() - 5) + ".raw";
}

/// Returns: the golden streams of whole images that give back the raw file beside them.
std::vector<std::string> exactStreams() {
    const test::Codec codec = test::makeCodec();
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(TESK_GOLDEN_FOLDER)) {
        const std::string name = entry.path().string();
        if (!name.ends_with(".c.tk")) continue;
        if (!std::filesystem::exists(rawNameOf(name))) continue;
        const test::Call decoded = test::decompressCall(codec.get(), test::readFile(name));
        if (decoded.status == TESK_OK && decoded.bytes == test::readFile(rawNameOf(name)))
            names.push_back(name);
    }
    return names;
}

TEST(TrailedStreams, OfGoldenExactStreamsDecodeToTheirImages) {
    const std::vector<std::string> names = exactStreams();
    EXPECT_GT(names.size(), 12U);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const Bytes stream = test::readFile(name);
        expectTrailerBehind(stream);
        expectSamePixels(stream, test::readFile(rawNameOf(name)));
    }
}

/// Small images in both depths, of which many need a rescue: their streams use what decoders do not care
/// about, but not what stands behind them.
TEST(TrailedStreams, OfExactCompressionDecodeToTheirImages) {
    const test::Codec codec = test::makeCodec();
    int rescued = 0;
    for (const auto& [bytes, bits] : test::kKindsOfBothProfiles)
        for (int width = 2; width < 10; ++width)
            for (int height = 2; height < 10; ++height) {
                const test::RawImage image =
                    test::makeImage(test::Content::flat, bytes, bits, width, height);
                const test::Call made = test::compressCall(codec.get(), image);
                ASSERT_EQ(made.status, TESK_OK);
                rescued += made.result.rescue != 0 ? 1 : 0;
                expectTrailerBehind(made.bytes);
                expectSamePixels(made.bytes, image.bytes);
            }
    EXPECT_GT(rescued, 20);
}

}  // namespace
