#include "ChunkValues.h"

#include <gtest/gtest.h>

#include "FilterRun.h"

namespace {

using hdf5::Values;

constexpr Values kGray{1, 2, 300, 200, 12, kUnverifiedChunks};

bool isRead(const Values& values, std::size_t count = kChunkValueCount) {
    ChunkValues chunk;
    return readChunkValues(count, values.data(), &chunk) != 0;
}

Values with(std::size_t place, unsigned value) {
    Values values = kGray;
    values[place] = value;
    return values;
}

TEST(ChunkValues, ThoseOfAChunkComeBack) {
    ChunkValues chunk;
    ASSERT_TRUE(readChunkValues(kGray.size(), kGray.data(), &chunk));
    EXPECT_EQ(chunk.columns, 300U);
    EXPECT_EQ(chunk.rows, 200U);
    EXPECT_EQ(hdf5::valuesOf(chunk), kGray);
    EXPECT_EQ(rawBytes(&chunk), 120000U);
}

TEST(ChunkValues, AnotherCountOrVersionIsRefused) {
    for (std::size_t count = 0; count < kGray.size(); ++count)
        EXPECT_FALSE(isRead(kGray, count)) << count;
    EXPECT_FALSE(isRead(kGray, kGray.size() + 1));
    EXPECT_FALSE(isRead(with(0, 0)));
    EXPECT_FALSE(isRead(with(0, 2)));
}

TEST(ChunkValues, BytesSidesBitsAndFlagsHaveLimits) {
    EXPECT_FALSE(isRead(with(1, 0)));
    EXPECT_FALSE(isRead(with(1, 4)));
    for (const std::size_t side : {std::size_t{2}, std::size_t{3}}) {
        for (const unsigned pixels : {0U, 1U, 65536U, 0xffffffffU})
            EXPECT_FALSE(isRead(with(side, pixels))) << pixels;
        EXPECT_TRUE(isRead(with(side, 2)));
        EXPECT_TRUE(isRead(with(side, 65535)));
    }
    EXPECT_TRUE(isRead(with(4, 16)));
    EXPECT_FALSE(isRead(with(4, 17)));
    EXPECT_FALSE(isRead(Values{1, 1, 300, 200, 9, 0}));
    EXPECT_TRUE(isRead(with(5, kSignedSamples | kUnverifiedChunks)));
    EXPECT_FALSE(isRead(with(5, 4)));
    EXPECT_FALSE(isRead(Values{1, 3, 300, 200, 8, kSignedSamples}));
}

TEST(ChunkValues, AChunkHasLessThan4GigabytesAsHdf5Wants) {
    EXPECT_TRUE(isRead(Values{1, 1, 65535, 65535, 0, 0}));
    EXPECT_FALSE(isRead(Values{1, 2, 65535, 65535, 0, 0}));
    EXPECT_FALSE(isRead(Values{1, 3, 65535, 65535, 0, 0}));
}

}  // namespace
