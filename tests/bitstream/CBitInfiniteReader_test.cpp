#include "bitstream/CBitInfiniteReader.h"

#include <deque>
#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/CBitFileReader.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitFileReader;
using qmx::CBitInfiniteReader;
using qmx::CBitReader;
using test::Bits;
using test::Bytes;
using test::ScratchFile;

/// Returns: the bits from `first` on, with zeros behind the end, count bits in all.
Bits tailOf(const Bits& bits, std::uint64_t first, std::uint64_t count) {
    Bits tail(bits.begin() + static_cast<long>(std::min<std::uint64_t>(first, bits.size())),
              bits.end());
    tail.resize(count, false);
    return tail;
}

TEST(CBitInfiniteReader, DeliversOnlyZerosWithoutASource) {
    CBitInfiniteReader reader;
    EXPECT_EQ(reader.getTotal(), 0U);
    for (int i = 0; i < 500; ++i)
        ASSERT_EQ(reader.readInt(63), 0U);
    EXPECT_EQ(reader.countZeros(41), 41);
}

TEST(CBitInfiniteReader, DeliversAllDataWhateverLengthIsGivenAndThenZeros) {
    const Bits bits = test::randomBits(72, 12);
    const Bytes bytes = test::packed(bits);
    CBitReader source(bytes.data(), bytes.size());
    CBitInfiniteReader reader;
    reader.create(&source, 5);
    EXPECT_EQ(test::readBits(reader, 72), bits);
    EXPECT_EQ(reader.getTotal(), 72U);
    EXPECT_EQ(reader.readInt(32), 0U);
    EXPECT_EQ(test::readBits(reader, 20000), Bits(20000, false));
}

TEST(CBitInfiniteReader, FieldsMayReachAcrossTheEndOfTheData) {
    for (std::size_t size = 0; size <= 17; ++size)
        for (int width = 1; width < 64; ++width) {
            const Bits bits = test::randomBits(8 * size, size);
            const Bytes bytes = test::packed(bits);
            CBitReader source(bytes.data(), size);
            CBitInfiniteReader reader;
            reader.create(&source, 8 * size);
            const auto step = static_cast<std::uint64_t>(width);
            for (std::uint64_t place = 0; place < bits.size() + 200; place += step)
                ASSERT_EQ(reader.readInt(width), test::valueAt(bits, place, width));
        }
}

TEST(CBitInfiniteReader, TotalGoesOnFromTheSourceAndStartsAgainWithTheZeros) {
    const Bytes bytes(9, 0xFF);
    CBitReader source(bytes.data(), bytes.size());
    source.readInt(30);
    CBitInfiniteReader reader;
    reader.create(&source, 0);
    EXPECT_EQ(reader.getTotal(), 30U);
    test::readBits(reader, 42);
    EXPECT_EQ(reader.getTotal(), 72U);
    reader.readBit();
    EXPECT_EQ(reader.getTotal(), 1U);
    test::readBits(reader, 64 * 64 - 1);
    EXPECT_EQ(reader.getTotal(), 64U * 64);
    reader.readInt(3);
    EXPECT_EQ(reader.getTotal(), 3U);
}

TEST(CBitInfiniteReader, MemoryAndFileDeliverTheSameBitsFromAnyPlace) {
    for (std::size_t size : {0U, 1U, 9U, 16U, 4096U, 4099U, 8192U, 9003U}) {
        const Bits bits = test::randomBits(8 * size, size + 5);
        const Bytes bytes = test::packed(bits);
        const ScratchFile file(bytes);
        for (std::uint64_t place : {0U, 1U, 8U, 63U, 64U, 65U, 72U, 128U, 32704U, 32767U, 32768U,
                                    32769U, 32792U, 65535U, 65536U, 72024U}) {
            if (place > bits.size()) continue;
            std::fseek(file.get(), 0, SEEK_SET);
            CBitFileReader fileSource(file.get());
            CBitReader memorySource(bytes.data(), size);
            fileSource.skip(place);
            memorySource.skip(place);
            CBitInfiniteReader ofFile;
            CBitInfiniteReader ofMemory;
            ofFile.create(&fileSource, 0);
            ofMemory.create(&memorySource, 0);
            const std::uint64_t count = bits.size() - place + 10000;
            const Bits expected = tailOf(bits, place, count);
            ASSERT_TRUE(test::readBits(ofMemory, count) == expected) << size << " from " << place;
            ASSERT_TRUE(test::readBits(ofFile, count) == expected) << size << " from " << place;
        }
    }
}

TEST(CBitInfiniteReader, ManyReadersShareAFileWithTheirSource) {
    const Bits bits = test::randomBits(8 * 20003, 21);
    const ScratchFile file(test::packed(bits));
    CBitFileReader source(file.get());
    struct Follower {
        CBitInfiniteReader reader;
        std::uint64_t place = 0;
    };
    std::deque<Follower> followers;
    test::Random random(77);
    std::uint64_t place = 0;
    while (place + 6000 < bits.size()) {
        ASSERT_EQ(source.readInt(37), test::valueAt(bits, place, 37));
        place += 37;
        Follower& added = followers.emplace_back();
        added.reader.create(&source, 1);
        added.place = place;
        const std::uint64_t length = random.below(5000);
        source.skip(length);
        place += length;
        for (Follower& follower : followers)
            for (int i = 0; i < 20; ++i, follower.place += 61)
                ASSERT_EQ(follower.reader.readInt(61), test::valueAt(bits, follower.place, 61));
    }
    EXPECT_GT(followers.size(), 50U);
    EXPECT_EQ(source.getTotal(), place);
}

TEST(CBitInfiniteReader, ReadersCreatedNearTheEndOfAFileEndInZeros) {
    const Bits bits = test::randomBits(8 * 4100, 2);
    const ScratchFile file(test::packed(bits));
    CBitFileReader source(file.get());
    source.skip(bits.size() - 200);
    for (std::uint64_t place = bits.size() - 200; place < bits.size(); ++place) {
        CBitInfiniteReader reader;
        reader.create(&source, 0);
        ASSERT_EQ(test::readBits(reader, 500), tailOf(bits, place, 500));
        ASSERT_EQ(source.readBit(), bits[place] ? 1U : 0U);
    }
    CBitInfiniteReader reader;
    reader.create(&source, 0);
    EXPECT_EQ(test::readBits(reader, 500), Bits(500, false));
    EXPECT_EQ(test::thrownBy([&] { source.readBit(); }), qmx::kThrownEndOfStream);
}

TEST(CBitInfiniteReader, MayBeCreatedAgainOnAnotherSource) {
    const Bytes ones(100, 0xFF);
    const Bytes mixed(5000, 0x5A);
    const ScratchFile file(mixed);
    CBitFileReader fileSource(file.get());
    CBitReader memorySource(ones.data(), ones.size());
    CBitInfiniteReader reader;
    for (int i = 0; i < 3; ++i) {
        reader.create(&fileSource, 0);
        EXPECT_EQ(reader.readInt(16), 0x5A5AU);
        reader.create(&memorySource, 0);
        EXPECT_EQ(test::readBits(reader, 900), tailOf(Bits(800, true), 0, 900));
    }
}

TEST(CBitInfiniteReader, SkipsDataAndZerosInMemoryAndInAFileAlike) {
    const Bits bits = test::randomBits(8 * 9003, 31);
    const Bytes bytes = test::packed(bits);
    const ScratchFile file(bytes);
    for (std::uint64_t place : {0U, 1U, 64U, 70U, 32768U, 40001U, 72024U, 72030U})
        for (std::uint64_t length : {0U, 1U, 64U, 65U, 127U, 128U, 1000U, 32767U, 32768U, 32769U,
                                     71990U, 72023U, 72024U, 72025U, 1U << 31}) {
            std::fseek(file.get(), 0, SEEK_SET);
            CBitFileReader fileSource(file.get());
            CBitReader memorySource(bytes.data(), bytes.size());
            const Bits expected = tailOf(bits, place + length, 300);
            for (CBitReader* source : {static_cast<CBitReader*>(&fileSource), &memorySource}) {
                CBitInfiniteReader reader;
                reader.create(source, 0);
                test::readBits(reader, place);
                reader.skip(length);
                ASSERT_TRUE(test::readBits(reader, 300) == expected) << place << " + " << length;
            }
        }
}

TEST(CBitInfiniteReader, GoesOnFromAnotherInfiniteReaderOverAFile) {
    const Bits bits = test::randomBits(8 * 9000, 13);
    const ScratchFile file(test::packed(bits));
    for (std::uint64_t place : {0U, 5U, 40000U}) {
        std::fseek(file.get(), 0, SEEK_SET);
        CBitFileReader source(file.get());
        CBitInfiniteReader first;
        first.create(&source, 0);
        test::readBits(first, place);
        CBitInfiniteReader second;
        second.create(&first, 0);
        const std::uint64_t count = bits.size() - place + 100;
        EXPECT_TRUE(test::readBits(second, count) == tailOf(bits, place, count)) << place;
    }
}

TEST(CBitInfiniteReader, LoadedBitsAreThoseThatComeNext) {
    const Bits bits = test::randomBits(8 * 4300, 14);
    const Bytes bytes = test::packed(bits);
    const ScratchFile file(bytes);
    CBitFileReader fileSource(file.get());
    CBitReader memorySource(bytes.data(), bytes.size());
    for (CBitReader* source : {static_cast<CBitReader*>(&fileSource), &memorySource}) {
        CBitInfiniteReader reader;
        reader.create(source, 0);
        test::Random random(3);
        std::uint64_t place = 0;
        std::uint64_t straight = 0;
        while (place < bits.size()) {
            const qmx::BitSpan span = reader.loadedBits();
            const std::uint64_t count = std::min(random.below(200), span.end - span.next);
            for (std::uint64_t i = span.next; i < span.next + count; ++i, ++place, ++straight)
                ASSERT_EQ(span.bytes[i / 8] >> (i % 8) & 1, bits[place] ? 1 : 0) << place;
            if (span.end != 0) reader.goOnAt(span.next + count);
            for (std::uint64_t i = random.below(150); i > 0; --i, ++place)
                ASSERT_EQ(reader.readBit(), test::valueAt(bits, place, 1)) << place;
        }
        EXPECT_GT(straight, bits.size() / 3) << "most of them can be read straight from memory";
    }
}

TEST(CBitInfiniteReader, NothingIsLoadedBehindTheWholeWordsOrBeforeTheFirstWindow) {
    const Bytes bytes(20, 0xFF);
    const ScratchFile file(bytes);
    CBitFileReader fileSource(file.get());
    CBitInfiniteReader ofFile;
    ofFile.create(&fileSource, 0);
    EXPECT_EQ(ofFile.loadedBits().end, 0U);
    CBitReader memorySource(bytes.data(), bytes.size());
    CBitInfiniteReader ofMemory;
    ofMemory.create(&memorySource, 0);
    EXPECT_EQ(ofMemory.loadedBits().end, 128U);
    ofMemory.skip(128);
    EXPECT_EQ(ofMemory.loadedBits().end, 0U);
    ofMemory.skip(3);
    EXPECT_EQ(ofMemory.loadedBits().end, 0U);
    EXPECT_EQ(ofMemory.readInt(32), 0x1FFFFFFFU);
}

}  // namespace
