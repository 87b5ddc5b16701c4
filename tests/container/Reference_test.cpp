// The library against the plain reference codec, which was written from the format page and shares
// no code with it.

#include <gtest/gtest.h>

#include "reference/ReferenceDecoder.h"
#include "reference/ReferenceEncoder.h"
#include "support/LibraryCodec.h"

namespace {

using test::Bytes;
using test::Content;
using test::RawImage;
using test::ReadFrom;
using test::sameBytes;

reference::RawImage referenceImage(const RawImage& image) {
    return {image.bytesPerPixel, image.bitsPerPixel, image.width, image.height, image.bytes};
}

struct SampleType {
    int bytesPerPixel;
    int bitsPerPixel;
};

constexpr SampleType kSampleTypes[] = {{1, 8}, {3, 8}, {2, 10}, {2, 12}, {2, 13}, {2, 16}};

/// Returns: an image of any content, type and size up to 40 x 40; samples may exceed the bits that
/// it declares, so coefficients may wrap.
RawImage randomImage(std::uint64_t seed) {
    test::Random random(seed);
    const SampleType type = kSampleTypes[random.below(std::size(kSampleTypes))];
    const auto content = static_cast<Content>(random.below(5));
    const int width = static_cast<int>(random.below(41));
    const int height = static_cast<int>(random.below(41));
    RawImage image =
        test::makeImage(content, type.bytesPerPixel, type.bitsPerPixel, width, height, seed);
    if (type.bytesPerPixel == 2 && random.below(4) == 0)
        for (auto& byte : image.bytes)
            byte = static_cast<unsigned char>(random.next());
    return image;
}

void expectSameDecoding(const Bytes& stream) {
    const reference::Decoded expected = reference::decode(stream);
    for (const ReadFrom from : {ReadFrom::memory, ReadFrom::file}) {
        const test::Decoded actual = test::decode(stream, from);
        ASSERT_EQ(actual.status, expected.status);
        ASSERT_TRUE(sameBytes(expected.bytes, actual.bytes));
    }
}

TEST(AgainstReference, EncodesRandomImagesToTheSameBytes) {
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        const RawImage image = randomImage(seed);
        ASSERT_TRUE(sameBytes(reference::encode(referenceImage(image)), test::encode(image)))
            << seed << ": " << image.width << " x " << image.height;
    }
}

TEST(AgainstReference, PausesAndCutsLikeIt) {
    for (std::uint64_t seed = 1000; seed < 1060; ++seed) {
        const RawImage image = randomImage(seed);
        const int row = static_cast<int>(seed % 30) + 1;
        ASSERT_TRUE(sameBytes(reference::encode(referenceImage(image), row),
                              test::encode(image, ~std::uint64_t{0}, -row)));
        const std::uint64_t budget = 16 + seed % 300;
        ASSERT_TRUE(sameBytes(reference::encodeCut(referenceImage(image), budget),
                              test::encode(image, budget - 16)));
    }
}

TEST(AgainstReference, DecodesRandomStreamsToTheSameBytes) {
    for (std::uint64_t seed = 2000; seed < 2250; ++seed) {
        SCOPED_TRACE(seed);
        expectSameDecoding(test::encode(randomImage(seed)));
    }
}

TEST(AgainstReference, DecodesEveryPrefixOfADozenStreamsToTheSameBytes) {
    for (std::uint64_t seed = 0; seed < 12; ++seed) {
        const SampleType type = kSampleTypes[seed % std::size(kSampleTypes)];
        const auto content = static_cast<Content>(seed % 5);
        const int side = 4 + static_cast<int>(seed);
        const Bytes stream = test::encode(
            test::makeImage(content, type.bytesPerPixel, type.bitsPerPixel, side, side + 3));
        for (std::size_t size = 16; size <= stream.size(); ++size) {
            SCOPED_TRACE(size);
            expectSameDecoding(
                Bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size)));
        }
    }
}

TEST(AgainstReference, DecodesDamagedStreamsToTheSameBytes) {
    for (std::uint64_t seed = 3000; seed < 3600; ++seed) {
        SCOPED_TRACE(seed);
        test::Random random(seed);
        Bytes stream = test::encode(randomImage(seed % 50));
        for (std::uint64_t flips = 1 + random.below(4); flips > 0; --flips)
            if (stream.size() > 16) {
                const std::uint64_t place = 16 + random.below(stream.size() - 16);
                stream[place] ^= static_cast<unsigned char>(1U << random.below(8));
            }
        expectSameDecoding(stream);
    }
}

TEST(AgainstReference, DecodesNoiseBehindAHeaderToTheSameBytes) {
    for (std::uint64_t seed = 4000; seed < 4600; ++seed) {
        SCOPED_TRACE(seed);
        test::Random random(seed);
        const RawImage image = randomImage(seed % 50);
        Bytes stream = test::encode(image, 0);
        for (std::uint64_t i = 1 + random.below(200); i > 0; --i)
            stream.push_back(static_cast<unsigned char>(random.next()));
        expectSameDecoding(stream);
    }
}

}  // namespace
