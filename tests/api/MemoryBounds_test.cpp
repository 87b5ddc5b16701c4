#include <gtest/gtest.h>
#include <sstream>

#include "coding/syntax/CSectionTable.h"
#include "support/CodecObjects.h"
#include "support/RowCalls.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::Content;
using test::RawImage;

/// What an image has of which calls take memory.
struct Extent {
    /// Columns of all colour planes, padded to multiples of 8 for each.
    std::size_t columns;
    /// Samples in these.
    std::size_t samples;

    static Extent of(int width, int height, int bytesPerPixel) {
        const auto stride = static_cast<std::size_t>((width + 7) / 8 * 8);
        const std::size_t columns = stride * (bytesPerPixel == 3 ? 3 : 1);
        return {columns, columns * static_cast<std::size_t>(height)};
    }
};

/// What a call may hold: a constant, and bytes for each sample and each column.
struct Bound {
    std::size_t kilobytes;
    std::size_t bytesPerSample;
    std::size_t bytesPerColumn;

    std::size_t of(const Extent& extent) const {
        return 1000 * kilobytes + bytesPerSample * extent.samples + bytesPerColumn * extent.columns;
    }
    /// Returns: the bound as docs/limits.md has it.
    std::string words() const {
        std::ostringstream text;
        text << static_cast<double>(kilobytes) / 1000 << " MB";
        if (bytesPerSample != 0) text << " + " << bytesPerSample << " n";
        text << " + " << bytesPerColumn << " c";
        return text.str();
    }
};

struct Row {
    const char* images;
    int bytesPerPixel;
    int bitsPerPixel;
    Bound compress;
    /// Of compression to an exact stream that is not the plain one.
    Bound rescue;
    Bound decompress;
};

constexpr Row kRows[] = {
    {"8-bit gray", 1, 8, {100, 3, 8}, {100, 4, 16}, {100, 0, 300}},
    {"RGB", 3, 8, {300, 3, 8}, {300, 4, 16}, {250, 0, 300}},
    {"16-bit gray of up to 11 bits", 2, 11, {130, 4, 8}, {150, 5, 16}, {150, 0, 300}},
    {"16-bit gray of 12 to 16 bits", 2, 12, {200, 6, 16}, {250, 10, 32}, {150, 0, 620}},
};

constexpr int kSizes[][2] = {{0, 0},     {1, 1},     {1, 3000},  {5, 5},     {37, 53},
                             {48, 48},   {64, 64},   {100, 70},  {300, 200}, {2, 9000},
                             {3000, 20}, {65535, 4}, {8, 65535}, {9000, 64}, {1500, 1000}};

/// A bound is tight when some image takes this share of it.
constexpr double kTightShare = 0.8;

Extent extentOf(const RawImage& image) {
    return Extent::of(image.width, image.height, image.bytesPerPixel);
}

double share(std::size_t peakBytes, std::size_t boundBytes) {
    return static_cast<double>(peakBytes) / static_cast<double>(boundBytes);
}

class MemoryBounds : public testing::TestWithParam<Row> {
protected:
    void expectBoundsToHold(const RawImage& image) {
        const test::Call compressed = test::compressCall(plainCodec.get(), image);
        const std::size_t compressBound = GetParam().compress.of(extentOf(image));
        ASSERT_EQ(compressed.status, TESK_OK);
        EXPECT_LE(compressed.result.peak_memory_bytes, compressBound);
        fullest = std::max(fullest, share(compressed.result.peak_memory_bytes, compressBound));

        const test::Call back = test::decompressCall(codec.get(), compressed.bytes);
        const std::size_t decompressBound = GetParam().decompress.of(extentOf(image));
        EXPECT_LE(back.result.peak_memory_bytes, decompressBound);
        fullestBack = std::max(fullestBack, share(back.result.peak_memory_bytes, decompressBound));
        expectReducedBoundsToHold(compressed.bytes, back.status);
    }

    /// A picture takes no more than an image of its size may.
    void expectReducedBoundsToHold(const Bytes& stream, int status) {
        const TKHeader header = test::headerOf(stream);
        for (int k = 1; k <= levelCount(header.xSize, header.ySize); ++k) {
            const ImageShape shape = shapeOf(header).reducedBy(k);
            const test::Call call =
                test::reduceCall(codec.get(), stream, static_cast<std::uint32_t>(k));
            EXPECT_EQ(call.status, status);
            EXPECT_LE(call.result.peak_memory_bytes,
                      GetParam().decompress.of(
                          Extent::of(shape.width, shape.height, header.bytesPerPixel)));
        }
    }

    /// An exact stream may declare more bits, and then takes what these take.
    void expectExactBoundToHold(const RawImage& image) {
        const test::Call exact = test::compressCall(codec.get(), image);
        if (exact.status == TESK_NOT_RESTORABLE) return;
        const bool hasMoreBits = (exact.result.rescue & TESK_RESCUE_DECLARED_BITS) != 0;
        const Bound& bound = hasMoreBits ? kRows[3].rescue : GetParam().rescue;
        EXPECT_LE(exact.result.peak_memory_bytes, bound.of(extentOf(image)));

        const test::Call rows = test::pushCall(codec.get(), image, 0, {8});
        const bool hasWraps = (rows.result.rescue & TESK_RESCUE_WHOLE_WRAPS) != 0;
        // Their rows come out of their own stream.
        const std::size_t more = hasWraps ? GetParam().decompress.of(extentOf(image)) : 0;
        EXPECT_LE(rows.result.peak_memory_bytes, bound.of(extentOf(image)) + more);
    }

    test::Codec codec = test::makeCodec();
    test::Codec plainCodec = test::makeCodecWithFlags(TESK_PLAIN);
    /// The greatest shares of the bounds that an image took.
    double fullest = 0;
    double fullestBack = 0;
};

TEST_P(MemoryBounds, HoldForEverySizeAndContentAndAreTight) {
    const int declaredBits = GetParam().bitsPerPixel;
    // The samples of a hostile image do not keep to the bits that it declares.
    for (const int sampleBits : {declaredBits, GetParam().bytesPerPixel == 2 ? 16 : 8})
        for (const Content content : {Content::flat, Content::photo, Content::noise})
            for (const auto& [width, height] : kSizes) {
                RawImage image =
                    test::makeImage(content, GetParam().bytesPerPixel, sampleBits, width, height);
                image.bitsPerPixel = declaredBits;
                SCOPED_TRACE(std::string(nameOf(content)) + " " + std::to_string(width) + " x " +
                             std::to_string(height) + " of " + std::to_string(sampleBits));
                expectBoundsToHold(image);
                expectExactBoundToHold(image);
            }
    std::printf("shares of the bounds: %.3f, %.3f\n", fullest, fullestBack);
    EXPECT_GT(fullest, kTightShare);
    EXPECT_GT(fullestBack, kTightShare);
}

TEST_P(MemoryBounds, HoldForAStreamWithSectionsOfEveryBitPlane) {
    const Row& row = GetParam();
    const TKHeader header = makeHeader(row.bytesPerPixel, row.bitsPerPixel, 9000, 64);
    const int planes = row.bitsPerPixel > 11 ? kTableBitPlanes<int> : kTableBitPlanes<short>;
    test::StreamBuilder stream(header.xSize, header.ySize, planes - 1);
    for (int order = 0; order < kMaxOrders; ++order)
        for (int p = 0; p < planes; ++p)
            stream.header(0, order, false, 0);
    const Bytes bytes = test::headed(header, stream.cut());
    const test::Call back = test::decompressCall(codec.get(), bytes);
    const std::size_t bound =
        row.decompress.of(Extent::of(header.xSize, header.ySize, header.bytesPerPixel));
    EXPECT_LE(back.result.peak_memory_bytes, bound);
    expectReducedBoundsToHold(bytes, TESK_CUT);
}

TEST_P(MemoryBounds, AreThoseOfThePageOfLimits) {
    const Bytes page = test::readFile(TESK_DOCS_FOLDER "/limits.md");
    const std::string row = std::string("| ") + GetParam().images + " | " +
                            GetParam().compress.words() + " | " + GetParam().rescue.words() +
                            " | " + GetParam().decompress.words() + " |\n";
    EXPECT_NE(std::string(page.begin(), page.end()).find(row), std::string::npos) << row;
}

INSTANTIATE_TEST_SUITE_P(SampleTypes, MemoryBounds, testing::ValuesIn(kRows),
                         [](const auto& instance) {
                             return std::to_string(instance.param.bytesPerPixel) + "Bytes" +
                                    std::to_string(instance.param.bitsPerPixel) + "Bits";
                         });

}  // namespace
