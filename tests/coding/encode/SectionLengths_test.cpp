#include "coding/encode/SectionLengths.h"

#include <gtest/gtest.h>
#include <vector>

#include "coding/encode/COrderEncoder.h"
#include "support/TestImages.h"

namespace {

using namespace qmx;

/// Returns: folded values of up to topPlane, many of them 0.
std::vector<std::uint64_t> someValues(std::size_t count, int topPlane, test::Random& random) {
    std::vector<std::uint64_t> values(count);
    for (std::uint64_t& value : values)
        value = random.below(2) == 0 ? 0 : random.next() & lowBits(2 + topPlane);
    return values;
}

TEST(SectionLengths, AreThoseOfTheCoders) {
    test::Random random(5);
    for (std::size_t count = 1; count < 200; ++count) {
        const auto values = someValues(count, static_cast<int>(count % 16), random);
        EncoderStreams<short> streams(1, 0, count, std::pmr::new_delete_resource());
        COrderEncoder<short> coder(streams, 0, 0);
        for (const std::uint64_t value : values)
            coder.encode(value);
        coder.finish();
        const auto sections = significanceLengths(values);
        for (std::size_t p = 0; p < 16; ++p) {
            OrderSections& order = streams.of(0, 0);
            const PlaneSections& section = order.bitPlanes[p];
            if (section.significanceBits() != 0) {
                EXPECT_EQ(sections[p].closingRun, section.run(order.position));
            }
            order.close(static_cast<int>(p));
            EXPECT_EQ(sections[p].bits, section.significanceBits());
        }
    }
}

TEST(SectionLengths, OnlyASectionThatIsTooLongLosesItsLastRun) {
    const SectionLength section{20, 3};  // 4 bits of it are the last run
    EXPECT_EQ(section.sentBits(19, ClosingRuns::written), 20U);
    EXPECT_EQ(section.sentBits(19, ClosingRuns::zerosLeftOut), 20U);
    EXPECT_EQ(section.sentBits(19, ClosingRuns::leftOut), 16U);
    EXPECT_EQ(section.sentBits(20, ClosingRuns::leftOut), 20U);
    const SectionLength full{20, 0};
    EXPECT_EQ(full.sentBits(19, ClosingRuns::written), 20U);
    EXPECT_EQ(full.sentBits(19, ClosingRuns::zerosLeftOut), 19U);
    EXPECT_EQ(full.sentBits(19, ClosingRuns::leftOut), 19U);
}

TEST(SectionLengths, TheExcessIsThatOfTheLongestSection) {
    // Nine coefficients that are new in plane 7: a run of 0 and a sign each, and the last run.
    const std::vector<std::uint64_t> values(9, 400);
    EXPECT_EQ(excessBits(values, 15, ClosingRuns::written), 4U);
    EXPECT_EQ(excessBits(values, 15, ClosingRuns::zerosLeftOut), 3U);
    EXPECT_EQ(excessBits(values, 19, ClosingRuns::written), 0U);
    EXPECT_EQ(excessBits({}, 0, ClosingRuns::written), 0U);
}

}  // namespace
