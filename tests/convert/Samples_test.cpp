#include "convert/Samples.h"

#include <gtest/gtest.h>

#include "convert/ConvertTestSupport.h"

namespace {

using namespace qmx;
using test::Bytes;

TEST(Samples, PackedOnesBeginAtTheHighestBits) {
    const unsigned char packed[] = {0b10110001, 0b01000000};
    Bytes bits(9);
    unpackSamples(packed, 1, bits.data(), 9);
    EXPECT_EQ(bits, Bytes({1, 0, 1, 1, 0, 0, 0, 1, 0}));
    Bytes pairs(5);
    unpackSamples(packed, 2, pairs.data(), 5);
    EXPECT_EQ(pairs, Bytes({2, 3, 0, 1, 1}));
    Bytes nibbles(3);
    unpackSamples(packed, 4, nibbles.data(), 3);
    EXPECT_EQ(nibbles, Bytes({11, 1, 4}));
}

TEST(Samples, PackingUndoesUnpacking) {
    for (const unsigned bits : {1U, 2U, 4U})
        for (std::size_t count = 1; count <= 20; ++count) {
            Bytes samples(count);
            for (std::size_t i = 0; i < count; ++i)
                samples[i] = static_cast<unsigned char>((7 * i + 3) % (1U << bits));
            Bytes packed(count, 0xFF);
            packSamples(samples.data(), bits, packed.data(), count);
            Bytes again(count);
            unpackSamples(packed.data(), bits, again.data(), count);
            EXPECT_EQ(again, samples) << bits << " " << count;
        }
}

TEST(Samples, TurnsUndoThemselves) {
    const Bytes original = {1, 2, 3, 0x84, 0xFF, 0xFF};
    Bytes samples = original;
    swapSampleBytes(samples.data(), 3);
    EXPECT_EQ(samples, Bytes({2, 1, 0x84, 3, 0xFF, 0xFF}));
    swapSampleBytes(samples.data(), 3);
    flipSampleSigns(samples.data(), 3);
    EXPECT_EQ(samples, Bytes({1, 0x82, 3, 4, 0xFF, 0x7F}));
    flipSampleSigns(samples.data(), 3);
    EXPECT_EQ(samples, original);
}

TEST(Samples, OnlyAChannelThatIsTheSameEverywhereIsRemoved) {
    const unsigned char opaque[] = {9};
    Bytes pixels = {1, 2, 9, 3, 4, 9};
    removeOpaqueChannel(pixels.data(), 2, 3, opaque);
    EXPECT_EQ(Bytes(pixels.begin(), pixels.begin() + 4), Bytes({1, 2, 3, 4}));
    Bytes other = {1, 2, 9, 3, 4, 8};
    EXPECT_NE(test::refusalOf([&] { removeOpaqueChannel(other.data(), 2, 3, opaque); }), "");
}

}  // namespace
