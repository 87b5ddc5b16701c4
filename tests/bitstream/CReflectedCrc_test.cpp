#include "bitstream/CReflectedCrc.h"

#include <gtest/gtest.h>

#include "support/TestImages.h"

namespace {

using qmx::CCrc32;
using qmx::CCrc64;
using test::Bytes;

template <class Crc>
auto crcOf(const Bytes& bytes) {
    Crc crc;
    crc.add(bytes.data(), bytes.size());
    return crc.value();
}

/// Bit after bit.
template <class Word>
Word plainCrc(const Bytes& bytes, Word polynomial) {
    Word state = static_cast<Word>(~Word{0});
    for (const unsigned char byte : bytes)
        for (int bit = 0; bit < 8; ++bit) {
            const bool isOdd = ((state ^ (byte >> bit)) & 1) != 0;
            state = (state >> 1) ^ (isOdd ? polynomial : 0);
        }
    return ~state;
}

TEST(CReflectedCrc, OfBothWidthsIsTheKnownOne) {
    const Bytes digits = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(crcOf<CCrc32>(digits), 0xCBF43926U);
    EXPECT_EQ(crcOf<CCrc32>({}), 0U);
    EXPECT_EQ(crcOf<CCrc64>(digits), 0x995DC9BBDF1939FAU);
    EXPECT_EQ(crcOf<CCrc64>({}), 0U);
}

template <class Crc, class Word>
void expectPlainCrc(Word polynomial) {
    test::Random random(1);
    Bytes bytes;
    for (int length = 0; length < 100; ++length) {
        EXPECT_EQ(crcOf<Crc>(bytes), plainCrc(bytes, polynomial)) << length;
        for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
            Crc crc;
            crc.add(bytes.data(), cut);
            crc.add(bytes.data() + cut, bytes.size() - cut);
            EXPECT_EQ(crc.value(), plainCrc(bytes, polynomial));
        }
        bytes.push_back(static_cast<unsigned char>(random.next()));
    }
}

TEST(CReflectedCrc, IsThatOfThePlainWayAtEveryLengthAndInPieces) {
    expectPlainCrc<CCrc32>(std::uint32_t{0xEDB88320});
    expectPlainCrc<CCrc64>(std::uint64_t{0xC96C5795D7870F42});
}

}  // namespace
