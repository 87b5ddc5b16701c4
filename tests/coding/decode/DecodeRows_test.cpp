// Streams of all kinds, decoded row by row at every CPU level, against the plain reference, which takes one bit at a time.

#include "coding/decode/DecodeRows.h"

#include <gtest/gtest.h>

#include "reference/ReferenceDecoder.h"
#include "support/CpuLevels.h"
#include "support/LibraryCodec.h"
#include "support/StreamBuilder.h"

namespace {

using test::Bytes;
using test::Content;
using test::prefixOf;
using test::Random;
using test::RawImage;
using test::ReadFrom;
using test::sameBytes;

using SampleType = test::SampleKind;
constexpr SampleType kSampleTypes[] = {{1, 8}, {3, 8}, {2, 10}, {2, 12}, {2, 13}, {2, 16}};

RawImage imageOf(SampleType type, Content content, int width, int height, std::uint64_t seed = 1) {
    return test::makeImage(content, type.bytesPerPixel, type.bitsPerPixel, width, height, seed);
}

void expectSameDecoding(const Bytes& stream) {
    const reference::Decoded expected = reference::decode(stream);
    for (const ReadFrom from : {ReadFrom::memory, ReadFrom::file}) {
        const test::Outcome actual = test::decode(stream, from);
        ASSERT_EQ(actual.status, expected.status);
        ASSERT_TRUE(sameBytes(expected.bytes, actual.bytes));
    }
}

/// Flips some bits behind the header.
void damage(Bytes& stream, Random& random) {
    for (std::uint64_t flips = 1 + random.below(5); flips > 0; --flips)
        stream[16 + random.below(stream.size() - 16)] ^=
            static_cast<unsigned char>(1U << random.below(8));
}

using DecodeRowsTest = test::AtCpuLevel;

TEST_P(DecodeRowsTest, SmallImages) {
    for (int width = 0; width < 40; width += width < 9 ? 1 : 6)
        for (int height = 0; height < 40; height += height < 9 ? 1 : 5) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            for (const SampleType type : {SampleType{1, 8}, {3, 8}, {2, 16}}) {
                const auto content = static_cast<Content>((width + height) % 5);
                expectSameDecoding(test::encode(imageOf(type, content, width, height)));
            }
        }
}

// Each number of levels with heights around and beyond the rows of its ring, and whole and cut streams of
// an image that is tall and wide, with columns that are not filtered.
TEST_P(DecodeRowsTest, HeightsAroundTheRowsInWork) {
    for (const int width : {3, 5, 9, 18, 37, 70})
        for (const int height : {15, 16, 17, 31, 33, 63, 64, 66, 127, 128, 129, 130, 257}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            const SampleType type = height % 2 == 0 ? SampleType{1, 8} : SampleType{2, 16};
            expectSameDecoding(test::encode(imageOf(type, Content::photo, width, height)));
        }
    const Bytes tall = test::encode(imageOf({1, 8}, Content::photo, 529, 1030));
    expectSameDecoding(tall);
    expectSameDecoding(prefixOf(tall, tall.size() / 2));
}

TEST_P(DecodeRowsTest, AllWidths) {
    for (int width = 1; width <= 200; ++width) {
        SCOPED_TRACE(width);
        const SampleType type = kSampleTypes[width % 6];
        const auto content = static_cast<Content>(width / 6 % 5);
        expectSameDecoding(test::encode(imageOf(type, content, width, 9)));
    }
}

TEST_P(DecodeRowsTest, ImagesOfManyWindowsOfAllTypesAndContents) {
    for (const SampleType type : kSampleTypes)
        for (const Content content :
             {Content::flat, Content::gradient, Content::noise, Content::photo, Content::sparse}) {
            SCOPED_TRACE(std::string(nameOf(content)) + std::to_string(type.bitsPerPixel));
            expectSameDecoding(test::encode(imageOf(type, content, 301, 210)));
        }
}

TEST_P(DecodeRowsTest, StreamsCutAtEveryByte) {
    for (const SampleType type : {SampleType{1, 8}, SampleType{2, 16}}) {
        const Bytes stream = test::encode(imageOf(type, Content::photo, 24, 17));
        for (std::size_t size = 16; size <= stream.size(); ++size) {
            SCOPED_TRACE(size);
            expectSameDecoding(prefixOf(stream, size));
        }
    }
}

TEST_P(DecodeRowsTest, LongStreamsCutAnywhere) {
    Random random(5);
    for (const SampleType type : kSampleTypes)
        for (const Content content : {Content::noise, Content::photo, Content::sparse}) {
            const Bytes stream = test::encode(imageOf(type, content, 150, 133));
            for (int i = 0; i < 6; ++i) {
                const std::size_t size = 16 + random.below(stream.size() - 15);
                SCOPED_TRACE(size);
                expectSameDecoding(prefixOf(stream, size));
            }
        }
}

TEST_P(DecodeRowsTest, DamagedStreams) {
    Random random(77);
    for (int i = 0; i < 150; ++i) {
        SCOPED_TRACE(i);
        const SampleType type = kSampleTypes[i % 6];
        const auto content = static_cast<Content>(i % 5);
        Bytes stream = test::encode(imageOf(type, content, 40 + i, 30 + i % 7));
        damage(stream, random);
        expectSameDecoding(stream);
    }
}

TEST(DecodeRows, RandomImagesAndNoiseBehindTheirHeaders) {
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        const RawImage image = test::randomImage(seed);
        expectSameDecoding(test::encode(image));
        Random random(seed);
        Bytes noise(1 + random.below(200));
        for (unsigned char& byte : noise)
            byte = static_cast<unsigned char>(random.next());
        expectSameDecoding(test::headed(test::headerOf(image), noise));
    }
}

/// Returns: a stream file of a grayscale image with the sections in `sections`.
Bytes grayFile(int width, int height, int bitsPerPixel, const Bytes& sections) {
    RawImage image{bitsPerPixel > 8 ? 2 : 1, bitsPerPixel, width, height, {}};
    return test::headed(test::headerOf(image), sections);
}

/// Returns: bits of which about one in `rarity` is set.
std::string randomPayload(Random& random, std::uint64_t bits, std::uint64_t rarity) {
    std::string payload;
    for (; bits > 0; --bits)
        payload += random.below(rarity) == 0 ? '1' : '0';
    return payload;
}

TEST_P(DecodeRowsTest, SectionsThatNoEncoderMakes) {
    // Any mixture of the types and any payload: runs that cross each other, refinement without
    // significance, planes above the tables, escapes and ends.
    Random random(11);
    for (int i = 0; i < 250; ++i) {
        SCOPED_TRACE(i);
        const int width = 16 + static_cast<int>(random.below(90));
        const int height = 16 + static_cast<int>(random.below(20));
        test::StreamBuilder builder(width, height, static_cast<int>(random.below(36)));
        for (std::uint64_t sections = random.below(60); sections > 0; --sections)
            builder.section(0, static_cast<int>(random.below(3)), random.below(2) == 0,
                            randomPayload(random, random.below(300), 2 + random.below(30)));
        expectSameDecoding(grayFile(width, height, random.below(2) == 0 ? 8 : 16,
                                    random.below(2) == 0 ? builder.end() : builder.cut()));
    }
}

TEST_P(DecodeRowsTest, EscapesAndEndsAmongOrdinaryRuns) {
    const std::string escape = std::string(40, '0') + "1";
    const std::string end(41, '0');
    Random random(12);
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE(i);
        test::StreamBuilder builder(120, 40, 9);
        for (int p = 9; p >= 0; --p) {
            std::string payload;
            for (std::uint64_t parts = random.below(12); parts > 0; --parts) {
                payload += randomPayload(random, random.below(120), 2);
                if (random.below(4) == 0) payload += random.below(3) == 0 ? end : escape;
            }
            builder.n(0, payload);
        }
        expectSameDecoding(grayFile(120, 40, 8, builder.end()));
    }
}

TEST_P(DecodeRowsTest, ASuspensionLeavesTheFirstRowsOfLaterPlanesEmpty) {  // Quirk 5
    constexpr int kSizes[][2] = {{2, 3}, {3, 9}, {7, 5}, {9, 12}, {17, 19}, {33, 37}, {65, 67}};
    for (const auto& [width, height] : kSizes)
        for (const SampleType type : {SampleType{1, 8}, {3, 8}}) {
            const Bytes stream = test::encode(imageOf(type, Content::photo, width, height));
            const Bytes paused = test::encode(imageOf(type, Content::photo, width, height),
                                              ~std::uint64_t{0}, -height / 2);
            for (int row = 1; row < height + 3; ++row)
                for (const Bytes& each : {stream, paused})
                    ASSERT_TRUE(sameBytes(reference::decode(each, 0, row).bytes,
                                          test::decode(each, ReadFrom::memory, -row).bytes))
                        << height << " rows, behind row " << row;
        }
}

/// Counts the rows that it gets. At one of them it wants no more, or sets a flag.
class CountingSink final : public qmx::IRowSink<short> {
public:
    CountingSink(int lastRow, bool stops) : last(lastRow), isStopping(stops) {}
    bool take(const qmx::CImageData<short>&, int, int r) override {
        EXPECT_EQ(r, taken++);
        if (isStopping && r == last) stop = true;
        return isStopping || r != last;
    }

    int taken = 0;
    std::atomic<bool> stop{false};

private:
    int last;
    bool isStopping;
};

/// Returns: whether sink gets all rows of a photograph.
bool givesAllRows(CountingSink& sink) {
    static const Bytes stream = test::encode(imageOf({1, 8}, Content::photo, 30, 130));
    qmx::CBitReader reader(stream.data() + 16, stream.size() - 16);
    qmx::CReceivedSections<short> sections({30, 130, 1}, std::pmr::new_delete_resource());
    EXPECT_EQ(sections.read(reader), qmx::kComplete);
    return decodeRows(sections, sink, {0, qmx::CStopRequest(sink.stop)});
}

TEST(DecodeRows, EndsWhenNoMoreIsWantedOrWhenStopped) {
    for (const bool stops : {false, true})
        for (int row = 0; row < 130; ++row) {
            CountingSink sink(row, stops);
            ASSERT_FALSE(givesAllRows(sink)) << row;
            ASSERT_EQ(sink.taken, row + 1);
        }
    CountingSink patient(-1, false);
    EXPECT_TRUE(givesAllRows(patient));
    EXPECT_EQ(patient.taken, 130);
    CountingSink stopped(-1, true);
    stopped.stop = true;
    EXPECT_FALSE(givesAllRows(stopped));
    EXPECT_EQ(stopped.taken, 0);
}

INSTANTIATE_TEST_SUITE_P(Levels, DecodeRowsTest, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
