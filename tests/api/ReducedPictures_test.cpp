// Reduced pictures against those of the reference, which transforms whole planes and stops early: at every
// CPU level.

#include <gtest/gtest.h>

#include "coding/syntax/CSectionWalk.h"
#include "reference/ReferenceDecoder.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/CpuLevels.h"
#include "support/EveryDecoder.h"

namespace {

using test::Bytes;
using test::Content;
using test::prefixOf;
using test::RawImage;
using test::sameBytes;
using test::SampleKind;

/// Sanitizers make the reference slow.
constexpr int kSizeStep = test::kRunsInFull ? 1 : 7;
constexpr std::size_t kLengthStep = test::kRunsInFull ? 1 : 11;
constexpr int kDamaged = test::kRunsInFull ? 3000 : 300;

tesk_status statusOf(const std::vector<reference::Decoded>& pictures) {
    if (pictures.empty()) return TESK_INVALID_STREAM;
    return pictures[0].status == qmx::kCut ? TESK_CUT : TESK_OK;
}

std::uint32_t levelsOf(const Bytes& stream) {
    const qmx::TKHeader header = test::headerOf(stream);
    return static_cast<std::uint32_t>(std::max(qmx::levelCount(header.xSize, header.ySize), 0));
}

class ReducedPictures : public testing::Test {
protected:
    /// Expects all pictures of a stream, and one level more to be refused.
    void expectReference(const Bytes& stream) {
        const std::vector<reference::Decoded> pictures = reference::decodeReduced(stream);
        const std::uint32_t levels = levelsOf(stream);
        ASSERT_EQ(pictures.size(), pictures.empty() ? 0 : levels + 1U);
        for (int level = 0; level <= static_cast<int>(qmx::bestCpuLevel()); ++level) {
            const qmx::CCpuLevelGuard guard(static_cast<qmx::CpuLevel>(level));
            for (std::uint32_t k = 0; k <= levels; ++k) {
                SCOPED_TRACE(testing::Message() << "1 : " << (1 << k) << ", level " << level);
                const test::Call call = test::reduceCall(codec.get(), stream, k);
                ASSERT_EQ(call.status, statusOf(pictures));
                ASSERT_TRUE(sameBytes(pictures.empty() ? Bytes() : pictures[k].bytes, call.bytes));
            }
        }
        ASSERT_EQ(test::reduceCall(codec.get(), stream, levels + 1).status,
                  TESK_UNSUPPORTED_FORMAT);
    }

    /// A complete stream, a cut one, and the one that restores the image.
    void expectReferenceOf(const RawImage& image, std::uint64_t seed) {
        SCOPED_TRACE(test::nameOf(image));
        const Bytes stream = test::encode(image);
        ASSERT_NO_FATAL_FAILURE(expectReference(stream));
        test::Random random(seed);
        const std::size_t length = 16 + random.below(stream.size() - 15);
        ASSERT_NO_FATAL_FAILURE(expectReference(prefixOf(stream, length)));
        const Bytes exact = test::compressCall(codec.get(), image).bytes;
        if (exact == stream || exact.empty()) return;
        ASSERT_NO_FATAL_FAILURE(expectReference(exact));
    }

    test::Codec codec = test::makeCodec();
};

constexpr SampleKind kKinds[] = {{1, 8}, {3, 8}, {2, 16}, {2, 12}, {2, 11}, {2, 13}, {2, 9}};
constexpr Content kContents[] = {Content::photo, Content::noise, Content::sparse, Content::gradient,
                                 Content::flat};

TEST_F(ReducedPictures, AreTheReferenceAtAllSizes) {
    std::uint64_t turn = 0;
    for (int width = 0; width <= 70; width += kSizeStep)
        for (int height = 0; height <= 70; height += kSizeStep, ++turn) {
            const SampleKind kind = kKinds[turn % std::size(kKinds)];
            const Content content = kContents[turn / 3 % std::size(kContents)];
            ASSERT_NO_FATAL_FAILURE(
                expectReferenceOf(test::makeImage(content, kind.bytesPerPixel, kind.bitsPerPixel,
                                                  width, height, turn + 1),
                                  turn));
        }
}

TEST_F(ReducedPictures, AreTheReferenceForLargerImagesOfAllTypes) {
    for (const SampleKind kind : kKinds)
        for (const auto& [width, height] : {std::pair{64, 127}, {200, 65}, {99, 131}, {333, 70}})
            ASSERT_NO_FATAL_FAILURE(
                expectReferenceOf(test::makeImage(Content::photo, kind.bytesPerPixel,
                                                  kind.bitsPerPixel, width, height),
                                  7));
}

/// The column that steps of the image, not of the picture, leave out.
TEST_F(ReducedPictures, AreTheReferenceWhereALastColumnIsLeftOut) {  // Quirk 9
    for (const auto& [width, height] :
         {std::pair{261, 1026}, {257, 1024}, {133, 2049}, {70, 4100}, {67, 8200}, {515, 1030}})
        for (const SampleKind kind : {kKinds[0], kKinds[2]})
            ASSERT_NO_FATAL_FAILURE(
                expectReferenceOf(test::makeImage(Content::noise, kind.bytesPerPixel,
                                                  kind.bitsPerPixel, width, height),
                                  3));
}

TEST_F(ReducedPictures, OfEveryPrefixAreTheReference) {
    for (const SampleKind kind : {kKinds[0], kKinds[1], kKinds[2], kKinds[4]})
        for (const auto& [width, height] : {std::pair{9, 8}, {19, 16}, {34, 33}}) {
            const Bytes stream = test::encode(test::makeImage(Content::photo, kind.bytesPerPixel,
                                                              kind.bitsPerPixel, width, height));
            for (std::size_t size = 16; size <= stream.size(); size += kLengthStep) {
                SCOPED_TRACE(size);
                ASSERT_NO_FATAL_FAILURE(expectReference(prefixOf(stream, size)));
            }
        }
}

/// Sections run on into what is behind them, also into sections that are of no use here.
TEST_F(ReducedPictures, OfDamagedStreamsAreTheReference) {
    std::vector<Bytes> streams;
    for (const SampleKind kind : test::kKindsOfBothProfiles)
        for (const auto& [width, height] : {std::pair{8, 9}, {17, 40}, {37, 33}})
            streams.push_back(test::encode(test::makeImage(Content::photo, kind.bytesPerPixel,
                                                           kind.bitsPerPixel, width, height)));
    test::Random random(11);
    int usable = 0;
    for (int i = 0; i < kDamaged; ++i) {
        SCOPED_TRACE(i);
        Bytes stream = streams[random.below(streams.size())];
        for (std::uint64_t flips = 1 + random.below(3); flips != 0; --flips) {
            const std::size_t room = random.below(2) == 0 ? stream.size() - 16 : 60;
            stream[16 + random.below(room)] ^= static_cast<unsigned char>(1U << random.below(8));
        }
        ASSERT_NO_FATAL_FAILURE(expectReference(stream));
        usable += !reference::decodeReduced(stream).empty() ? 1 : 0;
    }
    EXPECT_GT(usable, kDamaged / 10);
    EXPECT_LT(usable, kDamaged);
}

TEST_F(ReducedPictures, OfNoiseAreTheReference) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const SampleKind kind = test::kKindsOfBothProfiles[seed % 7];
        ASSERT_NO_FATAL_FAILURE(expectReference(test::noiseStream(
            qmx::makeHeader(kind.bytesPerPixel, kind.bitsPerPixel, 33, 34), 60, seed)));
    }
}

/// Returns: the stream with noise in the payloads of all orders below `finest`.
Bytes withNoiseBelow(const Bytes& stream, int finest) {
    const qmx::TKHeader header = test::headerOf(stream);
    Bytes changed = stream;
    qmx::CBitReader reader(stream.data() + 16, stream.size() - 16);
    qmx::CSectionWalk walk(reader, 8 * (stream.size() - 16),
                           {header.planes(), qmx::levelCount(header.xSize, header.ySize),
                            qmx::sampleCountBits(header.xSize, header.ySize)});
    test::Random random(5);
    qmx::PlacedSection section;
    while (walk.next(section)) {
        if (section.header.order >= finest) continue;
        for (std::uint64_t bit = section.payloadBit; bit < section.endBit(); ++bit)
            changed[16 + bit / 8] ^= static_cast<unsigned char>(random.below(2) << bit % 8);
    }
    return changed;
}

TEST_F(ReducedPictures, TakeNothingFromThePayloadsOfFinerOrders) {
    for (const SampleKind kind : kKinds) {
        const RawImage image =
            test::makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 100, 90);
        const Bytes stream = test::encode(image);
        for (int k = 1; k <= 5; ++k) {
            const auto levels = static_cast<std::uint32_t>(k);
            const test::Call expected = test::reduceCall(codec.get(), stream, levels);
            const Bytes changed = withNoiseBelow(stream, k);
            EXPECT_NE(test::decompressCall(codec.get(), changed).bytes, image.bytes);
            const test::Call call = test::reduceCall(codec.get(), changed, levels);
            EXPECT_EQ(call.status, TESK_OK);
            EXPECT_TRUE(sameBytes(expected.bytes, call.bytes)) << k;
        }
    }
}

/// The example of section 17 of docs/format.md: the image of section 16.1.
TEST_F(ReducedPictures, OfThePageAreAsItSays) {
    RawImage image{1, 8, 9, 8, {}};
    for (int i = 0; i < 9 * 8; ++i)
        image.bytes.push_back(static_cast<unsigned char>(4 + i % 9));
    image.bytes[5 * 9 + 7] = 2;
    image.bytes[6 * 9 + 2] = 14;
    const Bytes stream = test::encode(image);
    EXPECT_EQ(test::reduceCall(codec.get(), stream, 1).bytes,
              (Bytes{4, 6, 8, 10, 12, 4, 6, 8, 10, 12, 4, 5, 8, 9, 11, 3, 10, 7, 9, 11}));
    EXPECT_EQ(test::reduceCall(codec.get(), stream, 2).bytes, (Bytes{4, 8, 13, 4, 7, 11}));
}

}  // namespace
