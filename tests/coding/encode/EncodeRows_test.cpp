// Images of all shapes against the plain reference: the same streams, and findings that are so. The test
// program runs at each CPU level.

#include "coding/encode/EncodeRows.h"

#include <gtest/gtest.h>

#include "reference/ReferenceDecoder.h"
#include "reference/ReferenceEncoder.h"
#include "support/CodedRows.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::CodedRows;
using test::Content;
using test::RawImage;

using SampleType = test::SampleKind;
constexpr SampleType kSampleTypes[] = {{1, 8}, {3, 8}, {2, 12}, {2, 16}};

RawImage imageOf(SampleType type, Content content, int width, int height) {
    return test::makeImage(content, type.bytesPerPixel, type.bitsPerPixel, width, height);
}

testing::AssertionResult isCodedLikeTheReference(const RawImage& image, int pauseRow = 0) {
    return test::sameBytes(reference::encode(test::referenceImage(image), pauseRow),
                           test::encode(image, ~std::uint64_t{0}, -pauseRow))
           << ": " << nameOf(image) << " behind row " << pauseRow;
}

TEST(EncodeRows, SmallImagesAreCodedLikeTheReference) {
    for (int width = 0; width < 40; width += width < 12 ? 1 : 3)
        for (int height = 0; height < 40; height += height < 12 ? 1 : 5)
            for (const SampleType type : kSampleTypes) {
                const auto content = static_cast<Content>((width + height) % 5);
                ASSERT_TRUE(isCodedLikeTheReference(imageOf(type, content, width, height)));
            }
}

// Blocks have 512 columns, as many of a row of a level as its odd ones or all of them. 529 x 1030 is tall
// and wide, with columns that are not filtered.
TEST(EncodeRows, ImagesOfManyLevelsAndBlocksAreCodedLikeTheReference) {
    constexpr int kSizes[][2] = {{64, 64},  {65, 65},   {127, 66},  {96, 600},  {511, 9},
                                 {512, 8},  {513, 5},   {1023, 5},  {1024, 11}, {1025, 18},
                                 {2049, 4}, {1537, 33}, {529, 1030}};
    for (const auto& [width, height] : kSizes)
        for (const SampleType type : kSampleTypes) {
            if (height > 1000 && type.bytesPerPixel != 1) continue;  // the reference is slow
            const auto content = width % 2 == 0 ? Content::noise : Content::photo;
            ASSERT_TRUE(isCodedLikeTheReference(imageOf(type, content, width, height)));
        }
}

TEST(EncodeRows, ASuspensionLeavesOutTheFirstRowsOfLaterPlanes) {  // Quirk 5
    constexpr int kSizes[][2] = {{2, 3}, {3, 9}, {7, 5}, {9, 12}, {17, 19}, {33, 37}, {65, 67}};
    for (const auto& [width, height] : kSizes) {
        const RawImage colours = imageOf({3, 8}, Content::photo, width, height);
        const RawImage gray = imageOf({1, 8}, Content::photo, width, height);
        const Bytes whole = test::encode(gray);
        // Its top plane is that of later planes, in a row that is left out.
        RawImage vivid{3, 8, width, height, Bytes(colours.bytes.size())};
        for (std::size_t c = 0; c < static_cast<std::size_t>(width); ++c)
            vivid.bytes[3 * c + c % 2] = 255;
        for (int row = 1; row < height + 3; ++row) {
            ASSERT_TRUE(isCodedLikeTheReference(colours, row));
            ASSERT_TRUE(isCodedLikeTheReference(vivid, row));
            ASSERT_TRUE(test::sameBytes(whole, test::encode(gray, ~std::uint64_t{0}, -row)));
        }
    }
}

TEST(EncodeRows, RandomImagesAreCodedAndCutLikeTheReference) {
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        const RawImage image = test::randomImage(seed);
        ASSERT_TRUE(isCodedLikeTheReference(image)) << seed;
        const std::uint64_t budget = 16 + seed % 300;
        ASSERT_TRUE(test::sameBytes(reference::encodeCut(test::referenceImage(image), budget),
                                    test::encode(image, budget - 16)))
            << seed;
    }
}

/// Returns: whether filtering once would change an image. What the inverse leaves as it is, it has made.
template <class T>
bool isChangedByFilter(const RawImage& image) {
    for (const reference::Plane& plane : test::planesOf<T>(image)) {
        reference::Plane inverse = plane;
        reference::inverseTransform(inverse, 8 * sizeof(T));
        if (inverse.values != plane.values) return true;
    }
    return false;
}

template <class T>
void expectFilteredOnce(const RawImage& image) {
    SCOPED_TRACE(nameOf(image));
    CodedRows<T> plain(image);
    CodedRows<T> filtered(image, {true, 0});
    const bool isThin = filtered.sections.levels() <= 0;
    ASSERT_TRUE(plain.result.isComplete && filtered.result.isComplete);
    ASSERT_FALSE(plain.result.isChangedByFilter);
    ASSERT_EQ(filtered.result.isChangedByFilter, isThin && isChangedByFilter<T>(image));
    ASSERT_EQ(plain.sections.facts().lostCoefficients, 0U);
    ASSERT_TRUE(filtered.result.isChangedByFilter || plain.stream() == filtered.stream());
    const CodedFacts& facts = filtered.sections.facts();
    if (facts.levels < 0 || facts.overlongSections != 0) return;
    const reference::Decoded decoded = reference::decode(filtered.stream());
    ASSERT_EQ(decoded.status, kComplete);
    ASSERT_TRUE(test::sameBytes(image.bytes, decoded.bytes));
}

TEST(EncodeRows, ThinImagesThatAreFilteredOnceComeBack) {  // Quirk 4
    constexpr int kLongSides[] = {0,  1,  2,  3,  4,  5,   6,   7,   8,    9,
                                  10, 17, 40, 41, 42, 511, 512, 513, 1024, 1025};
    for (int side = 0; side <= 4; ++side)
        for (const int longSide : kLongSides)
            for (const Content content : {Content::flat, Content::noise, Content::sparse}) {
                for (const SampleType type : {SampleType{1, 8}, {3, 8}, {2, 12}}) {
                    expectFilteredOnce<short>(imageOf(type, content, side, longSide));
                    expectFilteredOnce<short>(imageOf(type, content, longSide, side));
                }
                expectFilteredOnce<int>(imageOf({2, 16}, content, side, longSide));
                expectFilteredOnce<int>(imageOf({2, 16}, content, longSide, side));
                if (HasFatalFailure()) return;
            }
}

// Samples beyond 12 bits make coefficients that do not fit when they are folded.
TEST(EncodeRows, CoefficientsThatAreLostAreCounted) {
    RawImage image = imageOf({2, 16}, Content::noise, 70, 50);
    image.bitsPerPixel = 11;
    reference::Plane plane = test::planesOf<short>(image).front();
    reference::forwardTransform(plane, 16);
    const auto lost = std::count_if(plane.values.begin(), plane.values.end(),
                                    [](std::int64_t v) { return v < -16383 || v > 16383; });
    CodedRows<short> coded(image);
    EXPECT_EQ(coded.sections.facts().lostCoefficients, static_cast<std::uint64_t>(lost));
    EXPECT_GT(lost, 100);
    EXPECT_EQ(coded.sections.topPlane(), 61);
    EXPECT_TRUE(isCodedLikeTheReference(image));
}

/// Sets a flag at one of its rows.
class StoppingRows final : public IRowSource<short> {
public:
    StoppingRows(const RawImage& image, int row) : rows(image), lastRow(row) {}
    void load(CImageData<short>& to, int slot, int r) override {
        rows.load(to, slot, r);
        EXPECT_EQ(r, loaded++);
        if (r == lastRow) stop = true;
    }

    int loaded = 0;
    std::atomic<bool> stop{false};

private:
    test::RawRows<short> rows;
    int lastRow;
};

TEST(EncodeRows, EndsAtTheRowAtWhichItIsStopped) {
    for (const auto& [width, height] : {std::pair{40, 33}, {3, 20}, {1, 5}}) {
        const RawImage image = imageOf({3, 8}, Content::photo, width, height);
        for (int row = 0; row < height; ++row) {
            CCodedSections<short> sections({width, height, 3}, std::pmr::new_delete_resource());
            StoppingRows rows(image, row);
            EXPECT_FALSE(encodeRows(rows, sections, {true, 0, CStopRequest(rows.stop)}).isComplete);
            EXPECT_EQ(rows.loaded, row + 1);
        }
    }
}

}  // namespace
