#include "container/NarrowSamples.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

#include "container/Comparison.h"
#include "reference/ReferenceImage.h"
#include "reference/ReferenceWavelet.h"
#include "support/CodedPlane.h"
#include "support/RowCalls.h"

namespace {

using qmx::kNarrowSamples;
using test::Bytes;
using test::Content;
using test::RawImage;

using Weights = std::vector<double>;

Weights convolved(const Weights& a, const Weights& filter, std::size_t step) {
    Weights result(a.size() + (filter.size() - 1) * step);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < filter.size(); ++j)
            result[i + j * step] += a[i] * filter[j];
    return result;
}

/// Returns: how much each sample of a line counts for a coefficient of level 5, a smooth one or a detail.
Weights weightsOfLevelFive(bool isDetail) {
    const Weights smooth{-0.125, 0.25, 0.75, 0.25, -0.125};
    const Weights detail{-0.5, 1, -0.5};
    Weights weights{1};
    for (std::size_t step = 1; step < 16; step *= 2)
        weights = convolved(weights, smooth, step);
    return convolved(weights, isDetail ? detail : smooth, 16);
}

/// Returns: an image of 0 and the greatest narrow sample that gives some coefficient of level 5 its most.
reference::Plane extremePlane(bool isDetailRow, bool isDetailColumn, double sign) {
    constexpr int kSide = 256;
    const Weights down = weightsOfLevelFive(isDetailRow);
    const Weights across = weightsOfLevelFive(isDetailColumn);
    const auto at = [](const Weights& weights, int i, bool isDetail) {
        const int place = i - (isDetail ? 112 : 128) + static_cast<int>(weights.size() / 2);
        const bool isInside = place >= 0 && place < static_cast<int>(weights.size());
        return isInside ? weights[static_cast<std::size_t>(place)] : 0.0;
    };
    reference::Plane plane(kSide, kSide);
    for (int r = 0; r < kSide; ++r)
        for (int c = 0; c < kSide; ++c)
            if (sign * at(down, r, isDetailRow) * at(across, c, isDetailColumn) > 0)
                plane.at(r, c) = kNarrowSamples - 1;
    return plane;
}

TEST(NarrowSamples, HaveTheSameCoefficientsInBothWidths) {
    std::int64_t most = 0;
    for (const bool isDetailRow : {false, true})
        for (const bool isDetailColumn : {false, true})
            for (const double sign : {1.0, -1.0}) {
                reference::Plane narrow = extremePlane(isDetailRow, isDetailColumn, sign);
                reference::Plane wide = narrow;
                reference::forwardTransform(narrow, 16);
                reference::forwardTransform(wide, 32);
                ASSERT_TRUE(narrow.values == wide.values);
                for (const std::int64_t value : wide.values)
                    most = std::max(most, std::abs(value));
            }
    EXPECT_GT(most, 32500) << "images that are not extreme show nothing";
    EXPECT_LE(most, 32644);
}

TEST(NarrowSamples, AreThoseOfTwoBytesWithLowBitPlanes) {
    const auto mayBeNarrow = [](int bytesPerPixel, int bitsPerPixel, int topPlane) {
        const unsigned char stream = static_cast<unsigned char>(topPlane);
        return qmx::mayBeNarrow(qmx::makeHeader(bytesPerPixel, bitsPerPixel, 8, 8), &stream, 1);
    };
    EXPECT_TRUE(mayBeNarrow(2, 12, 12));
    EXPECT_TRUE(mayBeNarrow(2, 16, 0));
    EXPECT_FALSE(mayBeNarrow(2, 16, 13));
    EXPECT_FALSE(mayBeNarrow(2, 11, 12)) << "has 16-bit coefficients anyway";
    EXPECT_FALSE(mayBeNarrow(1, 8, 8));
    EXPECT_FALSE(qmx::mayBeNarrow(qmx::makeHeader(2, 12, 8, 8), nullptr, 0));
}

/// Returns: a stream of coefficients that are `most`, -most or 0.
Bytes anyStream(int bitsPerPixel, std::int64_t most, std::uint64_t seed) {
    test::Random random(seed);
    reference::Plane coefficients(64, 48);
    for (std::int64_t& value : coefficients.values)
        value = (static_cast<std::int64_t>(random.below(3)) - 1) * most;
    // Bright enough that most samples are above 0, while the others are small.
    for (const auto& [r, c] : {std::pair(0, 0), {0, 32}, {32, 0}, {32, 32}})
        coefficients.at(r, c) = 4000;
    return test::streamWith(coefficients, qmx::makeHeader(2, bitsPerPixel, 64, 48));
}

template <class T>
Bytes decodedAs(const Bytes& stream) {
    qmx::CBitReader reader(stream.data() + test::kHeaderBytes, stream.size() - test::kHeaderBytes);
    return test::decodeAs<T>(test::headerOf(stream), reader, 0).bytes;
}

constexpr std::int64_t kMosts[] = {3, 60, 1000, 4095, 8191};

TEST(NarrowSamples, StreamsOfAnyCoefficientsGiveWhatWideOnesGive) {
    const test::Codec codec = test::makeCodec();
    int different = 0;
    for (const int bitsPerPixel : {12, 13, 16})
        for (const std::int64_t most : kMosts) {
            const Bytes stream = anyStream(bitsPerPixel, most, 5);
            const Bytes wide = decodedAs<int>(stream);
            EXPECT_TRUE(test::sameBytes(test::decompressCall(codec.get(), stream).bytes, wide));
            EXPECT_TRUE(test::sameBytes(test::pullCall(codec.get(), stream).bytes, wide));
            different += static_cast<int>(decodedAs<short>(stream) != wide);
        }
    EXPECT_GT(different, 0) << "no sum overflows";
}

TEST(NarrowSamples, AnImageThatOnlyNarrowCoefficientsRestoreIsNotRestored) {
    int different = 0;
    for (const std::int64_t most : kMosts) {
        const Bytes stream = anyStream(16, most, 5);
        RawImage image{2, 16, 64, 48, decodedAs<short>(stream)};
        const qmx::TKHeader header = test::headerOf(image);
        qmx::CPixelsInMemory pixels(image.bytes.data(), header.rawRowBytes());
        const qmx::ImageJob job{header, pixels};
        const bool isWide = decodedAs<int>(stream) == image.bytes;
        EXPECT_EQ(qmx::restoresExactly(job, {stream.data() + test::kHeaderBytes,
                                             stream.size() - test::kHeaderBytes}),
                  isWide);
        different += static_cast<int>(!isWide);
    }
    EXPECT_GT(different, 0) << "no sum overflows";
}

TEST(NarrowSamples, OneBrightSampleAnywhereMakesNoDifference) {
    for (const std::uint32_t flags : {0U, 1U * TESK_UNVERIFIED, 1U * TESK_PLAIN}) {
        const test::Codec codec = test::makeCodecWithFlags(flags);
        for (const int bitsPerPixel : {12, 13, 16})
            for (const std::size_t row : {0U, 1U, 15U, 16U, 39U})
                for (const unsigned bright : {kNarrowSamples - 1, kNarrowSamples, 0xFFFFU}) {
                    RawImage image = test::makeImage(Content::photo, 2, 12, 70, 40);
                    image.bitsPerPixel = bitsPerPixel;
                    image.bytes[row * 140 + 77 / 2 * 2] = static_cast<unsigned char>(bright);
                    image.bytes[row * 140 + 77 / 2 * 2 + 1] =
                        static_cast<unsigned char>(bright >> 8);
                    SCOPED_TRACE(testing::Message()
                                 << bitsPerPixel << " bits, row " << row << ", " << bright);
                    // Rows that come one by one always have wide coefficients.
                    const test::Call whole = test::compressCall(codec.get(), image);
                    const test::Call rows = test::pushCall(codec.get(), image);
                    ASSERT_TRUE(test::sameBytes(whole.bytes, rows.bytes));
                    ASSERT_EQ(whole.status, rows.status);
                    ASSERT_EQ(whole.result.rescue, rows.result.rescue);
                    ASSERT_EQ(whole.result.loss, rows.result.loss);
                    if (flags == TESK_PLAIN) continue;
                    ASSERT_TRUE(test::sameBytes(
                        test::decompressCall(codec.get(), whole.bytes).bytes, image.bytes));
                }
    }
}

}  // namespace
