// Each stage of the search for a rescue: the coefficients of 0 and 1 that come to it first, what moves, and the
// stream of an image that has these coefficients. Format: docs/format.md, 15.1 Exact streams.

#include <gtest/gtest.h>
#include <string_view>

#include "bitstream/Status.h"
#include "coding/syntax/FoldedValue.h"
#include "reference/ReferenceDecoder.h"
#include "reference/ReferenceWavelet.h"
#include "support/CodecCalls.h"
#include "support/FoundRescue.h"

namespace {

using namespace qmx;
using test::RawImage;

/// What one stage of the search finds.
struct Stage {
    const char* name;
    /// Coefficients of 0 and 1 in an order of 12, whose sections hold 15 bits.
    std::string_view coefficients;
    ClosingRuns closing;
    /// How far each coefficient moves.
    std::string_view moved;
    /// Of the stream of an image that has these coefficients and no details.
    std::uint64_t streamHash;
};

FoldedValues valuesOf(std::string_view coefficients) {
    FoldedValues values;
    for (const char digit : coefficients)
        values.push_back(static_cast<std::uint64_t>(fold(std::int64_t{digit - '0'})));
    return values;
}

void expectStage(const Stage& stage, const ICoefficientMove& move) {
    SCOPED_TRACE(stage.name);
    FoldedValues expected = valuesOf(stage.coefficients);
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (stage.moved[i] != '0') expected[i] = move.moved(expected[i], stage.moved[i] - '0');
    const test::FoundRescue found = test::rescue(valuesOf(stage.coefficients), 15, move);
    EXPECT_EQ(found.values, expected);
    EXPECT_EQ(found.closing, stage.closing);
}

// A coefficient that is new takes the code of the run before it and a sign; run codes take 1 bit for 0,
// 2 for 1, 4 for 2 and 3, 6 for 4 to 7, 8 for 8 to 15. So the first stage below has 8 + 1 + 3 * 2 bits, and
// the last run of 0 is the 16th.

constexpr Stage kOtherStages[] = {
    {"a last run of 0 left out", "000000001111", ClosingRuns::zerosLeftOut, "000000000000",
     0x2E981949E6302C85},
    {"the last ones", "000000100100", ClosingRuns::written, "000000000100", 0x53601C0C08843BE7},
    {"the first ones", "000001100100", ClosingRuns::written, "000001100000", 0x71FED57311B3EB0C},
    {"some in the middle", "000010000100", ClosingRuns::written, "000010000000",
     0xB0748F7922F980E2},
    {"the last ones, and runs of 0 left out", "001001000101", ClosingRuns::zerosLeftOut,
     "000001000101", 0x54E9E539133AB218},
    {"the first ones, and runs of 0 left out", "001111001001", ClosingRuns::zerosLeftOut,
     "001110000000", 0x69BBBDC8DE785C90},
    {"some in the middle, and runs of 0 left out", "001001111001", ClosingRuns::zerosLeftOut,
     "000000111000", 0x87A90825A03AA138},
    {"the last ones, and runs left out", "000010100100", ClosingRuns::leftOut, "000000000100",
     0xD7F6586EE30F68D},
    {"the first ones, and runs left out", "001001001001", ClosingRuns::leftOut, "001001001000",
     0xC5D9BB05922DADE9},
};
constexpr Stage kWrapStages[] = {
    {"a last run of 0 left out", "000000001111", ClosingRuns::zerosLeftOut, "000000000000",
     0x685438F07E4B78FC},
    {"the last ones", "000000100100", ClosingRuns::written, "000000000001", 0xD0A36184CA1A955F},
    {"the first ones", "000011111000", ClosingRuns::written, "111000000000", 0x935B3F5A78188C57},
    {"some in the middle", "000011111001", ClosingRuns::written, "000111000000",
     0xCC7FA009F591556E},
    {"two groups", "001111111111", ClosingRuns::written, "000000011112", 0x2DED6CD8539C87E7},
};

/// Returns: an image whose coarsest order of 3 x 4 coefficients is given.
RawImage imageOf(std::string_view coefficients, int bytesPerPixel) {
    reference::Plane plane(9, 13);
    for (std::size_t i = 0; i < coefficients.size(); ++i)
        plane.at(static_cast<std::int64_t>(i / 3) * 4, static_cast<std::int64_t>(i % 3) * 4) =
            coefficients[i] - '0';
    reference::inverseTransform(plane, 32);
    RawImage image{bytesPerPixel, 8 * bytesPerPixel, 9, 13, {}};
    for (const std::int64_t sample : plane.values)
        for (int byte = 0; byte < bytesPerPixel; ++byte)
            image.bytes.push_back(static_cast<unsigned char>(sample >> (8 * byte)));
    return image;
}

/// Returns: FNV-1a.
std::uint64_t hashOf(const test::Bytes& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const unsigned char byte : bytes)
        hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

void expectStream(const Stage& stage, int bytesPerPixel, std::uint32_t moveFlag) {
    SCOPED_TRACE(stage.name);
    const RawImage image = imageOf(stage.coefficients, bytesPerPixel);
    const test::Call call = test::compressCall(test::makeCodec().get(), image);
    EXPECT_EQ(call.status, TESK_OK);
    const bool isMoved = stage.moved.find_first_not_of('0') != std::string_view::npos;
    const bool isClosed = stage.closing == ClosingRuns::written;
    EXPECT_EQ(call.result.rescue, (isMoved ? moveFlag : 0U) |
                                      (isClosed ? 0U : std::uint32_t{TESK_RESCUE_CLOSING_RUNS}));
    EXPECT_EQ(hashOf(call.bytes), stage.streamHash);
    const reference::Decoded decoded = reference::decode(call.bytes);
    EXPECT_EQ(decoded.status, kComplete);
    EXPECT_EQ(decoded.bytes, image.bytes);
}

TEST(RescueStages, EachGivesItsStreamWhichTheReferenceRestores) {
    for (const Stage& stage : kOtherStages)
        expectStream(stage, 1, TESK_RESCUE_OTHER_REPRESENTATIVE);
    for (const Stage& stage : kWrapStages)
        expectStream(stage, 2, TESK_RESCUE_WHOLE_WRAPS);
}

TEST(RescueStages, EachIsFoundWhereTheOnesBeforeItAreNotEnough) {
    for (const Stage& stage : kOtherStages)
        expectStage(stage, COtherRepresentative());
    for (const Stage& stage : kWrapStages)
        expectStage(stage, CWholeWraps(2));
}

}  // namespace
