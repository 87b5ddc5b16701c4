#include "bitstream/CCrc64.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"

namespace {

using qmx::CCrc64;
using test::Bytes;

std::uint64_t crcOf(const Bytes& bytes) {
    CCrc64 crc;
    crc.add(bytes.data(), bytes.size());
    return crc.value();
}

/// Bit after bit.
std::uint64_t plainCrc(const Bytes& bytes) {
    std::uint64_t state = ~std::uint64_t{0};
    for (const unsigned char byte : bytes)
        for (int bit = 0; bit < 8; ++bit) {
            const bool isOdd = ((state ^ (byte >> bit)) & 1) != 0;
            state = (state >> 1) ^ (isOdd ? 0xC96C5795D7870F42 : 0);
        }
    return ~state;
}

TEST(CCrc64, IsThatOfXzFiles) {
    EXPECT_EQ(crcOf({'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0x995DC9BBDF1939FAU);
    EXPECT_EQ(crcOf({}), 0U);
}

TEST(CCrc64, IsThatOfThePlainWayAtEveryLengthAndInPieces) {
    test::Random random(1);
    Bytes bytes;
    for (int length = 0; length < 100; ++length) {
        EXPECT_EQ(crcOf(bytes), plainCrc(bytes)) << length;
        for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
            CCrc64 crc;
            crc.add(bytes.data(), cut);
            crc.add(bytes.data() + cut, bytes.size() - cut);
            EXPECT_EQ(crc.value(), plainCrc(bytes));
        }
        bytes.push_back(static_cast<unsigned char>(random.next()));
    }
}

}  // namespace
