#include "image/UsedBits.h"

#include <gtest/gtest.h>

#include "support/GuardedBuffer.h"
#include "support/OrOfSamples.h"
#include "support/TestImages.h"

namespace {

using qmx::usedBitsOf;
using test::Bytes;

TEST(UsedBitsOf, ARowAreThoseOfItsSamples) {
    test::Random random(7);
    for (std::size_t size = 0; size <= 200; size += 2)
        for (const int sampleBytes : {1, 2})
            for (const std::size_t offset : {0U, 1U, 3U, 8U}) {
                Bytes row(offset + size);
                for (unsigned char& byte : row)
                    byte = random.below(20) == 0 ? static_cast<unsigned char>(random.next()) : 0;
                const Bytes samples(row.begin() + static_cast<std::ptrdiff_t>(offset), row.end());
                EXPECT_EQ(usedBitsOf(row.data() + offset, size, sampleBytes),
                          test::orOfSamples(samples, sampleBytes))
                    << size;
            }
}

TEST(UsedBitsOf, EveryBitOfEverySampleCounts) {
    for (const int sampleBytes : {1, 2})
        for (std::size_t bit = 0; bit < std::size_t{8} * 78; ++bit) {
            Bytes row(78);
            row[bit / 8] = static_cast<unsigned char>(1U << bit % 8);
            const std::size_t place = sampleBytes == 2 ? bit % 16 : bit % 8;
            EXPECT_EQ(usedBitsOf(row.data(), row.size(), sampleBytes), 1U << place);
        }
}

TEST(UsedBitsOf, ARowIsReadFromItsFirstByteToItsLast) {
    for (std::size_t size = 0; size <= 130; ++size)
        for (const test::Side side : test::kBothSides) {
            const test::GuardedBuffer<unsigned char> row(Bytes(size, 5), side);
            EXPECT_EQ(usedBitsOf(row.data(), size, 1), size == 0 ? 0U : 5U);
        }
}

}  // namespace
