#include "coding/syntax/CSectionWalk.h"

#include <gtest/gtest.h>

#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::StreamBuilder;

/// Counts how often it has no more bits, which is when it throws.
class CCountingReader final : public CBitReader {
public:
    using CBitReader::CBitReader;
    void fetch() override {
        ++fetches;
        CBitReader::fetch();
    }
    int fetches = 0;
};

/// What a walk through a stream of an 8 x 8 image met: three orders, 7 bits of samples.
struct Walk {
    explicit Walk(const Bytes& stream, int planes = 1) {
        CCountingReader reader(stream.data(), stream.size());
        CSectionWalk walk(reader, 8 * stream.size(), {planes, 2, sampleCountBits(8, 8)});
        top = walk.topPlane();
        for (PlacedSection section; walk.next(section);) {
            sections.push_back(section);
            EXPECT_EQ(walk.position(), section.endBit());
        }
        PlacedSection untouched;
        EXPECT_FALSE(walk.next(untouched));
        end = walk.end();
        position = walk.position();
        EXPECT_EQ(reader.fetches, 0) << "the walk stops in front of the end of the data";
    }
    std::vector<PlacedSection> sections;
    std::optional<int> top;
    StreamEnd end{};
    std::uint64_t position = 0;
};

// Top plane, tag and length field of order 2.
constexpr std::uint64_t kTopBits = 8;
constexpr std::uint64_t kHeaderBits = 6 + 7 + 1 - 4;

TEST(CSectionWalk, TellsWhereEachSectionStands) {
    const Walk walk(StreamBuilder(8, 8, 6).n(2, "101").u(2, "").n(2, "11111").end());
    EXPECT_EQ(walk.end, StreamEnd::complete);
    EXPECT_EQ(walk.top, 6);
    ASSERT_EQ(walk.sections.size(), 3U);
    const PlacedSection& first = walk.sections[0];
    EXPECT_EQ(first.firstBit, kTopBits);
    EXPECT_EQ(first.payloadBit, kTopBits + kHeaderBits);
    EXPECT_EQ(first.header.lengthBits, 3U);
    EXPECT_EQ(first.storedBits, 3U);
    EXPECT_EQ(first.bitPlane, 6);
    EXPECT_FALSE(first.isEmpty());
    const PlacedSection& second = walk.sections[1];
    EXPECT_EQ(second.firstBit, first.endBit());
    EXPECT_TRUE(second.header.isRefinement);
    EXPECT_TRUE(second.isEmpty());
    EXPECT_EQ(second.bitPlane, 5);
    EXPECT_EQ(walk.sections[2].bitPlane, 5);
    EXPECT_EQ(walk.position, walk.sections[2].endBit() + 2);
}

TEST(CSectionWalk, AStreamWithoutAWholeTopPlaneIsCut) {
    const Walk walk({});
    EXPECT_EQ(walk.end, StreamEnd::cut);
    EXPECT_FALSE(walk.top.has_value());
    EXPECT_TRUE(walk.sections.empty());
    EXPECT_EQ(walk.position, 0U);
}

TEST(CSectionWalk, ASectionWhosePayloadIsCutIsTheLastOne) {
    const Bytes stream = StreamBuilder(8, 8, 6).n(2, "1").header(0, 2, false, 12).cut();
    const Walk walk(stream);
    EXPECT_EQ(walk.end, StreamEnd::cut);
    ASSERT_EQ(walk.sections.size(), 2U);
    EXPECT_TRUE(walk.sections[1].isCut());
    EXPECT_EQ(walk.sections[1].header.lengthBits, 12U);
    EXPECT_EQ(walk.sections[1].endBit(), 8 * stream.size());
    EXPECT_EQ(walk.position, 8 * stream.size());
}

TEST(CSectionWalk, ADataEndBehindAPayloadOrInsideAHeaderIsNoSection) {
    // 8 + 10 + 6 bits are 3 whole bytes.
    const Bytes whole = StreamBuilder(8, 8, 6).n(2, "101010").cut();
    for (const int more : {0, 1}) {
        Bytes stream = whole;
        if (more != 0) stream.push_back(0);
        const Walk walk(stream);
        EXPECT_EQ(walk.end, StreamEnd::cut);
        ASSERT_EQ(walk.sections.size(), 1U);
        EXPECT_FALSE(walk.sections[0].isCut());
        EXPECT_EQ(walk.position, 24U);
    }
}

TEST(CSectionWalk, EveryPrefixOfAStreamEndsWithoutReadingBehindIt) {
    const Bytes stream = StreamBuilder(8, 8, 6)
                             .n(2, "101010101010101")
                             .u(2, "111")
                             .n(0, std::string(100, '1'))
                             .end();
    // Headers of orders 2 and 0 have 6 + 4 and 6 + 8 bits.
    constexpr std::uint64_t kEndMarkBit = 8 + (10 + 15) + (10 + 3) + (14 + 100);
    for (std::size_t size = 0; size <= stream.size(); ++size) {
        const Walk walk(test::prefixOf(stream, size));
        EXPECT_LE(walk.position, 8 * size);
        EXPECT_EQ(walk.end == StreamEnd::complete, 8 * size >= kEndMarkBit + 2) << size;
    }
}

TEST(CSectionWalk, SectionsThatTheImageCannotHaveMakeTheStreamInvalid) {
    for (const auto& [plane, order] : {std::pair{1, 0}, {2, 2}, {0, 3}}) {
        const Walk walk(StreamBuilder(8, 8, 6).n(2, "1").header(plane, order, false, 0).end());
        EXPECT_EQ(walk.end, StreamEnd::invalid) << plane << ' ' << order;
        EXPECT_EQ(walk.sections.size(), 1U);
        EXPECT_EQ(walk.position, kTopBits + kHeaderBits + 1);
    }
    EXPECT_EQ(Walk(StreamBuilder(8, 8, 6).header(2, 2, false, 0).end(), 3).end,
              StreamEnd::complete);
}

TEST(CSectionWalk, AForeignOrderWithItsLengthCutIsCutFirst) {
    // Order 7 reads 56 bits of length.
    Bytes stream{6, 7 << 2, 0, 0};
    EXPECT_EQ(Walk(stream).end, StreamEnd::cut);
    stream.resize(16);
    EXPECT_EQ(Walk(stream).end, StreamEnd::invalid);
}

TEST(CSectionWalk, BitPlanesGoOnBelowZero) {
    StreamBuilder builder(8, 8, 0);
    for (int i = 0; i < 4; ++i)
        builder.n(0, "");
    const Walk walk(builder.end());
    ASSERT_EQ(walk.sections.size(), 4U);
    EXPECT_EQ(walk.sections[3].bitPlane, -3);
}

}  // namespace
