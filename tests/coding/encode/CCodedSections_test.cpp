#include "coding/encode/CCodedSections.h"

#include <gtest/gtest.h>

#include "coding/encode/CSectionRescue.h"
#include "coding/syntax/FoldedValue.h"
#include "reference/ReferenceDecoder.h"
#include "support/CodedRows.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::CodedRows;
using test::Content;
using test::RawImage;
using test::StreamBuilder;

/// Returns: a gray image with 16-bit coefficients. One of 2 x 2 samples is not filtered, and all its
/// coefficients have order 0.
RawImage grayOf(int width, int height, const std::vector<int>& samples) {
    RawImage image{2, 12, width, height, {}};
    for (const int sample : samples) {
        image.bytes.push_back(static_cast<unsigned char>(sample));
        image.bytes.push_back(static_cast<unsigned char>(sample >> 8));
    }
    return image;
}

/// Returns: what follows the header.
Bytes sectionsOf(CodedRows<short>& coded) {
    const Bytes stream = coded.stream();
    return {stream.begin() + sizeof(TKHeader), stream.end()};
}
Bytes sectionsOf(const RawImage& image) {
    CodedRows<short> coded(image);
    return sectionsOf(coded);
}

TEST(CCodedSections, ZerosAreOneEmptySectionForEachPlaneAndOrder) {
    EXPECT_EQ(sectionsOf(grayOf(4, 4, std::vector<int>(16))),
              StreamBuilder(4, 4, 0).n(0, "").n(1, "").end());
    EXPECT_EQ(
        sectionsOf({3, 8, 2, 2, Bytes(12)}),
        StreamBuilder(2, 2, 0).n(0, "").section(1, 0, false, "").section(2, 0, false, "").end());
}

TEST(CCodedSections, ASideOfOneHasNoSections) {
    EXPECT_EQ(sectionsOf(grayOf(1, 9, std::vector<int>(9, 100))), StreamBuilder(1, 9, 6).end());
}

TEST(CCodedSections, RunsSignsAndRefinementByHand) {
    // Plane 3: value 8 * 3.7^3 / 8. Plane 2 is empty and goes out first, and with it everything
    // that is worth more than what follows.
    EXPECT_EQ(sectionsOf(grayOf(2, 2, {0, 13, -3, 0})), StreamBuilder(2, 2, 3)
                                                            .n(0, "01 0 0010")
                                                            .n(0, "")
                                                            .u(0, "1")
                                                            .n(0, "01 1 01")
                                                            .n(0, "")
                                                            .u(0, "0")
                                                            .u(0, "11")
                                                            .end());
}

TEST(CCodedSections, TheEstimateIsATwentiethMore) {
    const CodedRows<short> coded(grayOf(2, 2, {0, 13, -3, 0}));
    // 19 bits, for each of 4 planes 2 * 4 + 22, payloads of 7 + 5 and 1 + 1 + 2 bits.
    constexpr std::uint64_t kEstimate = 19 + 4 * 30 + 12 + 4;
    EXPECT_EQ(coded.sections.estimateBytes(), (kEstimate + kEstimate / 20 + 7) / 8);
}

TEST(CCodedSections, TheEstimateCountsPlanesThatTheTablesLack) {
    const CodedRows<short> coded(grayOf(2, 2, {-32768, 1, 20000, -20000}));
    // -32768 folds to 1 and 20000 to a negative number, both of magnitude 0; 1 is new at plane 0.
    constexpr std::uint64_t kEstimate = 19 + 62 * 30 + 7;
    EXPECT_EQ(coded.sections.estimateBytes(), (kEstimate + kEstimate / 20 + 7) / 8);
    EXPECT_EQ(coded.sections.topPlane(), 61);
}

TEST(CCodedSections, WrappedFoldedValuesDecodeAsZeros) {  // Quirk 13
    CodedRows<short> coded(grayOf(2, 2, {-32768, 1, 20000, -5}));
    EXPECT_EQ(coded.sections.facts().lostCoefficients, 2U);
    EXPECT_EQ(reference::decode(coded.stream()).bytes, grayOf(2, 2, {0, 1, 0, -5}).bytes);
}

TEST(CCodedSections, ASectionTooLongForItsLengthFieldIsCounted) {  // Quirk 11
    // The 9 coefficients of order 1 take 19 bits, of which the field says 3. The empty sections of order 0
    // go out first.
    CodedRows<short> flat({1, 8, 5, 5, Bytes(25, 200)});
    EXPECT_EQ(flat.sections.facts().overlongSections, 1U);
    EXPECT_EQ(flat.sections.facts().misreadBit, CodedFacts::kNeverMisread) << "not written yet";
    flat.stream();
    EXPECT_EQ(flat.sections.facts().misreadBit, 8U + 8 * (6 + 6) + (6 + 4) + 3);
    Bytes room(12);
    CBitWriter cut(room.data(), room.size());
    EXPECT_FALSE(flat.sections.writeWhatFits(cut));
    EXPECT_EQ(flat.sections.facts().misreadBit, CodedFacts::kNeverMisread) << "not that far";
    CodedRows<short> fits({1, 8, 4, 4, Bytes(16, 200)});
    fits.stream();
    EXPECT_EQ(fits.sections.facts().overlongSections, 0U);
    EXPECT_EQ(fits.sections.facts().misreadBit, CodedFacts::kNeverMisread);
}

TEST(CCodedSections, AFullWriterHoldsThePrefixOfTheCompleteStream) {
    CodedRows<short> photo(test::makeImage(Content::photo, 3, 8, 33, 29));
    const Bytes complete = sectionsOf(photo);
    for (std::size_t room = 0; room < complete.size(); room += 7) {
        Bytes cut(room);
        CBitWriter writer(cut.data(), room);
        ASSERT_FALSE(photo.sections.writeWhatFits(writer));
        ASSERT_EQ(writer.getTotal(), 8 * room);
        ASSERT_TRUE(std::equal(cut.begin(), cut.end(), complete.begin())) << room;
    }
    CBitWriter none(nullptr, 0);
    EXPECT_THROW(photo.sections.writeStream(none), int);
    EXPECT_EQ(sectionsOf(photo), complete) << "each call writes the same stream";
}

TEST(CCodedSections, WhenStoppedNoFurtherSectionIsWritten) {
    CodedRows<short> photo(test::makeImage(Content::photo, 1, 8, 40, 40));
    Bytes room(photo.sections.facts().streamBytes());
    CBitWriter writer(room.data(), room.size());
    const std::atomic<bool> stop{true};
    EXPECT_TRUE(photo.sections.writeWhatFits(writer, CStopRequest(stop)));
    EXPECT_EQ(writer.getTotal(), 8U + 2 + 9);
}

/// Returns: the folded values of the coarsest order, by the plain reference.
std::vector<std::uint64_t> coarsestOf(reference::Plane plane) {
    reference::forwardTransform(plane, 16);
    const std::int64_t levels = reference::levelCount(plane.width, plane.height);
    std::vector<std::uint64_t> values;
    for (std::int64_t y = 0; y < plane.height; ++y)
        for (std::int64_t x = 0; x < plane.width; ++x)
            if (reference::orderOf(y, x, levels) == levels)
                values.push_back(static_cast<std::uint64_t>(fold(plane.at(y, x))));
    return values;
}

// A block has 512 columns: the last sizes have more in a row of the coarsest order.
TEST(CCodedSections, TheCoarsestValuesAreThoseOfTheTransform) {
    constexpr int kSizes[][2] = {{2, 3},    {5, 4},   {9, 11},   {70, 64},
                                 {130, 99}, {600, 2}, {1030, 5}, {16500, 65}};
    for (const auto& [width, height] : kSizes) {
        const RawImage image = test::makeImage(Content::photo, 3, 8, width, height);
        const CodedRows<short> coded(image);
        int p = 0;
        for (const reference::Plane& plane : test::planesOf<short>(image)) {
            const FoldedValues values = coded.sections.coarsestValues(p++);
            ASSERT_EQ(std::vector<std::uint64_t>(values.begin(), values.end()), coarsestOf(plane))
                << width << " x " << height;
        }
    }
}

/// The coarsest order coded in another way: what decoders make of it.
class RecodedSections : public testing::Test {
protected:
    static RawImage smallNumbers() {
        RawImage image{1, 8, 64, 64, {}};
        test::Random random(9);
        for (int i = 0; i < 64 * 64; ++i)
            image.bytes.push_back(static_cast<unsigned char>(random.below(41)));
        return image;
    }

    RawImage image = smallNumbers();
    CodedRows<short> coded{image};
    CCodedSections<short>& sections = coded.sections;
    Bytes plain = coded.stream();
};

TEST_F(RecodedSections, TheSameValuesGiveTheSameStream) {
    ASSERT_EQ(sections.facts().overlongSections, 0U);
    for (const ClosingRuns closing :
         {ClosingRuns::written, ClosingRuns::zerosLeftOut, ClosingRuns::leftOut}) {
        sections.recodeCoarsest(0, sections.coarsestValues(0), closing);
        EXPECT_EQ(coded.stream(), plain) << "runs of sections that fit are written";
    }
    EXPECT_EQ(reference::decode(plain).bytes, image.bytes);
}

TEST_F(RecodedSections, OtherRepresentativesAreTheSameCoefficients) {
    FoldedValues values = sections.coarsestValues(0);
    const COtherRepresentative move;
    for (std::size_t i = 0; i < values.size(); i += 2)
        if (move.canMove(values[i])) values[i] = move.moved(values[i], 1);
    sections.recodeCoarsest(0, values, ClosingRuns::written);
    EXPECT_EQ(sections.topPlane(), 15);
    const Bytes recoded = coded.stream();
    EXPECT_NE(recoded, plain);
    EXPECT_EQ(reference::decode(recoded).bytes, image.bytes);
}

TEST_F(RecodedSections, RunsOfEmptySectionsMayBeSpelledOut) {
    // The details do not reach the bit planes of the coarsest order.
    sections.sendEndlessRuns(100);
    const Bytes spelled = coded.stream();
    EXPECT_GT(spelled.size(), plain.size());
    EXPECT_EQ(reference::decode(spelled).bytes, image.bytes);
}

TEST(CCodedSections, RunsThatNoDecoderPassesOverAreCountedUntilTheyAreSpelledOut) {
    for (const std::uint64_t surplus : {0U, 1U}) {
        CCodedSections<short> sections({2, 2, 1}, std::pmr::new_delete_resource());
        sections.streams().of(0, 0).position = kEndRun + 1 + surplus;
        sections.close({});
        EXPECT_EQ(sections.facts().endlessSections, surplus);
        const std::uint64_t bits = sections.facts().streamBits;
        sections.sendEndlessRuns();
        EXPECT_EQ(sections.facts().endlessSections, 0U);
        EXPECT_EQ(sections.facts().streamBits, bits + surplus * (31 + 1 + 30))
            << "a run of 2^30 + 2";
    }
}

}  // namespace
