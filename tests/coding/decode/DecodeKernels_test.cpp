// The decoder at every CPU level against the plain reference, which takes one bit at a time.

#include "coding/decode/DecodeKernels.h"

#include <gtest/gtest.h>

#include "reference/ReferenceDecoder.h"
#include "support/CodecObjects.h"
#include "support/CpuLevels.h"
#include "support/LibraryCodec.h"
#include "support/StreamBuilder.h"

namespace {

using test::Bytes;
using test::Content;
using test::Random;
using test::RawImage;
using test::ReadFrom;
using test::sameBytes;

struct SampleType {
    int bytesPerPixel;
    int bitsPerPixel;
};
constexpr SampleType kSampleTypes[] = {{1, 8}, {3, 8}, {2, 10}, {2, 12}, {2, 13}, {2, 16}};

RawImage imageOf(SampleType type, Content content, int width, int height, std::uint64_t seed = 1) {
    return test::makeImage(content, type.bytesPerPixel, type.bitsPerPixel, width, height, seed);
}

void expectSameDecoding(const Bytes& stream) {
    const reference::Decoded expected = reference::decode(stream);
    for (const ReadFrom from : {ReadFrom::memory, ReadFrom::file}) {
        const test::Decoded actual = test::decode(stream, from);
        ASSERT_EQ(actual.status, expected.status);
        ASSERT_TRUE(sameBytes(expected.bytes, actual.bytes));
    }
}

Bytes prefixOf(const Bytes& stream, std::size_t sizeBytes) {
    return {stream.begin(),
            stream.begin() + static_cast<std::ptrdiff_t>(std::min(sizeBytes, stream.size()))};
}

/// Flips some bits behind the header.
void damage(Bytes& stream, Random& random) {
    for (std::uint64_t flips = 1 + random.below(5); flips > 0; --flips)
        stream[16 + random.below(stream.size() - 16)] ^=
            static_cast<unsigned char>(1U << random.below(8));
}

class DecodeKernelsTest : public test::AtCpuLevel {};

TEST_P(DecodeKernelsTest, AllWidths) {
    for (int width = 1; width <= 200; ++width) {
        SCOPED_TRACE(width);
        const SampleType type = kSampleTypes[width % 6];
        const auto content = static_cast<Content>(width / 6 % 5);
        expectSameDecoding(test::encode(imageOf(type, content, width, 9)));
    }
}

TEST_P(DecodeKernelsTest, ImagesOfManyWindowsOfAllTypesAndContents) {
    for (const SampleType type : kSampleTypes)
        for (const Content content :
             {Content::flat, Content::gradient, Content::noise, Content::photo, Content::sparse}) {
            SCOPED_TRACE(std::string(nameOf(content)) + std::to_string(type.bitsPerPixel));
            expectSameDecoding(test::encode(imageOf(type, content, 301, 210)));
        }
}

TEST_P(DecodeKernelsTest, StreamsCutAtEveryByte) {
    for (const SampleType type : {SampleType{1, 8}, SampleType{2, 16}}) {
        const Bytes stream = test::encode(imageOf(type, Content::photo, 24, 17));
        for (std::size_t size = 16; size <= stream.size(); ++size) {
            SCOPED_TRACE(size);
            expectSameDecoding(prefixOf(stream, size));
        }
    }
}

TEST_P(DecodeKernelsTest, LongStreamsCutAnywhere) {
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

TEST_P(DecodeKernelsTest, DamagedStreams) {
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

/// Returns: a stream file of a grayscale image with the sections in `sections`.
Bytes grayFile(int width, int height, int bitsPerPixel, const Bytes& sections) {
    RawImage image{bitsPerPixel > 8 ? 2 : 1, bitsPerPixel, width, height, {}};
    const qmx::TKHeader header = test::headerOf(image);
    Bytes stream(sizeof header + sections.size());
    std::memcpy(stream.data(), &header, sizeof header);
    std::copy(sections.begin(), sections.end(), stream.begin() + sizeof header);
    return stream;
}

/// Returns: bits of which about one in `rarity` is set.
std::string randomPayload(Random& random, std::uint64_t bits, std::uint64_t rarity) {
    std::string payload;
    for (; bits > 0; --bits)
        payload += random.below(rarity) == 0 ? '1' : '0';
    return payload;
}

TEST_P(DecodeKernelsTest, SectionsThatNoEncoderMakes) {
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

TEST_P(DecodeKernelsTest, EscapesAndEndsAmongOrdinaryRuns) {
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

TEST_P(DecodeKernelsTest, SuspendedAfterEachRow) {
    const RawImage photo = imageOf({1, 8}, Content::photo, 133, 70);
    const Bytes stream = test::encode(photo);
    qmx::CBitReader reader(stream.data() + 16, stream.size() - 16);
    qmx::CImageData<short> image(photo.width, photo.height, 1);
    qmx::CFilter5_3<short> filter;
    qmx::CWaveletDecoder<short> decoder(&image, &filter, false);
    for (int row = 0; row < photo.height; ++row) {
        decoder.stop();
        ASSERT_EQ(decoder.readWavelet(reader, 0), qmx::kSuspended) << row;
    }
    ASSERT_EQ(decoder.readWavelet(reader, 0), qmx::kComplete);
    decoder.untransform();
    Bytes back(photo.bytes.size());
    decoder.convertAndCopyToT(back.data(), 1, 0);
    EXPECT_TRUE(sameBytes(photo.bytes, back));
}

TEST_P(DecodeKernelsTest, ALevelGoesOnWhereAnotherHasStopped) {
    const RawImage photo = imageOf({2, 16}, Content::photo, 133, 70);
    const Bytes stream = test::encode(photo);
    qmx::CBitReader reader(stream.data() + 16, stream.size() - 16);
    qmx::CImageData<int> image(photo.width, photo.height, 1);
    qmx::CFilter5_3<int> filter;
    qmx::CWaveletDecoder<int> decoder(&image, &filter, false);
    ASSERT_EQ(decoder.readWavelet(reader, -31), qmx::kSuspended);
    {
        const qmx::CCpuLevelGuard other(qmx::CpuLevel::scalar);
        ASSERT_EQ(decoder.readWavelet(reader, -40), qmx::kSuspended);
    }
    ASSERT_EQ(decoder.readWavelet(reader, 0), qmx::kComplete);
    decoder.untransform();
    Bytes back(photo.bytes.size());
    decoder.convertAndCopyToT(back.data(), 2, 0);
    EXPECT_TRUE(sameBytes(photo.bytes, back));
}

INSTANTIATE_TEST_SUITE_P(Levels, DecodeKernelsTest, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
