#include "trailer/Trailer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include "support/Bytes.h"
#include "support/TestImages.h"
#include "trailer/CTrailerWriter.h"

namespace {

using qmx::CTrailerWriter;
using qmx::Trailer;
using test::Bytes;

const Bytes kStream = {0x54, 0x4B, 0x01, 0xFF, 0x00};
const Bytes kUmlaut = {0xC3, 0xA4};
const Bytes kThousand = {0xE8, 0x03, 0x00, 0x00};

/// Bytes of which a number of zeros may stand in front. What reads outside is found.
class CGuardedBytes final : public qmx::IPlacedBytes {
public:
    explicit CGuardedBytes(Bytes all, std::uint64_t zerosInFront = 0)
        : bytes(std::move(all)), zeros(zerosInFront) {}

    std::uint64_t sizeBytes() const override { return zeros + bytes.size(); }
    void read(std::uint64_t offset, std::span<unsigned char> to) const override {
        if (offset > sizeBytes() || to.size() > sizeBytes() - offset)
            throw std::out_of_range("read outside");
        for (std::size_t i = 0; i < to.size(); ++i)
            to[i] = offset + i < zeros ? 0 : bytes[static_cast<std::size_t>(offset + i - zeros)];
    }

private:
    Bytes bytes;
    std::uint64_t zeros;
};

Bytes operator+(Bytes front, const Bytes& back) {
    front.insert(front.end(), back.begin(), back.end());
    return front;
}

Bytes textBytes(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes numberBytes(std::size_t number) {
    Bytes bytes(4);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(number >> (8 * i));
    return bytes;
}

Bytes boxBytes(std::string_view name, const Bytes& data) {
    return textBytes(name) + numberBytes(data.size()) + data;
}

/// The stream with a trailer of any boxes behind it, of which the first should be the checksum.
Bytes fileOfBoxes(const Bytes& boxes) {
    return kStream + textBytes("TKTRAIL1") + boxes + numberBytes(8 + boxes.size() + 8) +
           textBytes("TKT1");
}

const Bytes kAnyChecksum = boxBytes("crc ", {1, 2, 3, 4});

std::optional<Trailer> found(const Bytes& file, std::size_t streamBytes = kStream.size()) {
    return qmx::findTrailer(CGuardedBytes(file), streamBytes);
}

Bytes trailerOfTwoBoxes() {
    CTrailerWriter writer;
    writer.add("desc", kUmlaut);
    writer.add("max ", kThousand);
    return writer.finish(kStream);
}

/// The polynomial of zlib over all bits, one by one.
std::uint32_t plainChecksum(const Bytes& bytes) {
    std::uint32_t state = 0xFFFFFFFF;
    for (const unsigned char byte : bytes)
        for (int bit = 0; bit < 8; ++bit)
            state = (state >> 1) ^ (((state ^ (byte >> bit)) & 1) != 0 ? 0xEDB88320U : 0);
    return ~state;
}

TEST(Trailer, HasTheseBytes) {
    // The checksum is that of the stream, 54 4b 01 ff 00, and of the boxes "desc" and "max ".
    const Bytes expected =
        textBytes("TKTRAIL1") + textBytes("crc ") + Bytes{4, 0, 0, 0, 0x7B, 0xA4, 0x18, 0xAD} +
        textBytes("desc") + Bytes{2, 0, 0, 0, 0xC3, 0xA4} + textBytes("max ") +
        Bytes{4, 0, 0, 0, 0xE8, 0x03, 0, 0} + Bytes{50, 0, 0, 0} + textBytes("TKT1");
    EXPECT_TRUE(test::sameBytes(expected, trailerOfTwoBoxes()));
}

TEST(Trailer, WithoutBoxesHasAChecksumOfTheStream) {
    const Bytes expected = textBytes("TKTRAIL1") +
                           boxBytes("crc ", numberBytes(plainChecksum(kStream))) + numberBytes(28) +
                           textBytes("TKT1");
    EXPECT_TRUE(test::sameBytes(expected, CTrailerWriter().finish(kStream)));
    EXPECT_TRUE(found(kStream + expected));
}

TEST(Trailer, OfTheWriterIsFound) {
    const Bytes file = kStream + trailerOfTwoBoxes();
    const auto trailer = found(file);
    ASSERT_TRUE(trailer);
    EXPECT_EQ(trailer->streamBytes, 5U);
    ASSERT_EQ(trailer->boxes.size(), 2U);
    EXPECT_EQ(trailer->boxes[0].name, "desc");
    EXPECT_EQ(trailer->boxes[0].offset, 33U);
    EXPECT_EQ(trailer->boxes[0].sizeBytes, 2U);
    EXPECT_EQ(trailer->boxes[1].name, "max ");
    EXPECT_EQ(trailer->boxes[1].offset, 43U);
    EXPECT_EQ(trailer->boxes[1].sizeBytes, 4U);
    EXPECT_EQ(qmx::checksumOf(qmx::CMemoryBytes(file), *trailer), trailer->crc);
}

TEST(Trailer, ShowsEveryFlippedBitOfItsFile) {
    const Bytes file = kStream + trailerOfTwoBoxes();
    for (std::size_t bit = 0; bit < 8 * file.size(); ++bit) {
        Bytes flipped = file;
        flipped[bit / 8] ^= static_cast<unsigned char>(1U << bit % 8);
        const auto trailer = found(flipped);
        EXPECT_FALSE(trailer && qmx::checksumOf(CGuardedBytes(flipped), *trailer) == trailer->crc)
            << bit;
    }
}

TEST(Trailer, IsGoneInEveryPrefixAndWithBytesBehindIt) {
    const Bytes file = kStream + trailerOfTwoBoxes();
    for (std::size_t bytes = 0; bytes < file.size(); ++bytes)
        EXPECT_FALSE(found(test::prefixOf(file, bytes))) << bytes;
    EXPECT_FALSE(found(file + Bytes{0}));
    EXPECT_FALSE(found({}, 0));
}

TEST(Trailer, BeginsWhereTheStreamEnds) {
    const Bytes file = kStream + trailerOfTwoBoxes();
    for (std::size_t bytes = 0; bytes <= file.size() + 1; ++bytes)
        EXPECT_EQ(found(file, bytes).has_value(), bytes == kStream.size()) << bytes;
    EXPECT_FALSE(found(file, std::size_t(-1)));
}

TEST(Trailer, OfAnotherLengthIsNone) {
    const std::size_t lengthPlace = kStream.size() + 42;
    for (const std::size_t length : {0U, 1U, 27U, 28U, 49U, 51U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        Bytes file = kStream + trailerOfTwoBoxes();
        std::ranges::copy(numberBytes(length),
                          file.begin() + static_cast<std::ptrdiff_t>(lengthPlace));
        EXPECT_FALSE(found(file)) << length;
    }
}

/// The sum of stream and trailer has more than 32 bits, and so have all offsets.
TEST(Trailer, StandsBehindAStreamOfManyGigabytes) {
    const std::uint64_t streamBytes = (std::uint64_t{1} << 40) + 5;
    const CGuardedBytes file(trailerOfTwoBoxes(), streamBytes);
    const auto trailer = qmx::findTrailer(file, streamBytes);
    ASSERT_TRUE(trailer);
    EXPECT_EQ(trailer->boxes[1].offset, streamBytes + 38);
    EXPECT_FALSE(qmx::findTrailer(file, 5));
    EXPECT_FALSE(qmx::findTrailer(file, streamBytes - (std::uint64_t{1} << 32)));
}

TEST(Trailer, WithABoxThatLiesAboutItsLengthIsNone) {
    for (const std::size_t length : {3U, 5U, 11U, 13U, 0x7FFFFFFFU, 0xFFFFFFF0U, 0xFFFFFFFFU})
        EXPECT_FALSE(found(fileOfBoxes(kAnyChecksum + textBytes("any ") + numberBytes(length) +
                                       Bytes(4) + boxBytes("more", {}))))
            << length;
    EXPECT_TRUE(found(fileOfBoxes(kAnyChecksum + textBytes("any ") + numberBytes(4) + Bytes(4) +
                                  boxBytes("more", {}))));
    for (std::size_t bytes = 1; bytes < 8; ++bytes)
        EXPECT_FALSE(found(fileOfBoxes(kAnyChecksum + Bytes(bytes)))) << bytes;
}

TEST(Trailer, WithoutAChecksumInFrontIsNone) {
    EXPECT_TRUE(found(fileOfBoxes(kAnyChecksum)));
    EXPECT_FALSE(found(fileOfBoxes({})));
    EXPECT_FALSE(found(fileOfBoxes(boxBytes("desc", kUmlaut))));
    EXPECT_FALSE(found(fileOfBoxes(boxBytes("desc", kUmlaut) + kAnyChecksum)));
    EXPECT_FALSE(found(fileOfBoxes(boxBytes("desc", kThousand) + kAnyChecksum)));
    for (const std::size_t bytes : {0U, 3U, 5U, 8U})
        EXPECT_FALSE(found(fileOfBoxes(boxBytes("crc ", Bytes(bytes))))) << bytes;
}

TEST(Trailer, WithANameTwiceIsNone) {
    const Bytes box = boxBytes("desc", {});
    EXPECT_TRUE(found(fileOfBoxes(kAnyChecksum + box + boxBytes("desC", {}))));
    EXPECT_FALSE(found(fileOfBoxes(kAnyChecksum + box + box)));
    EXPECT_FALSE(found(fileOfBoxes(kAnyChecksum + box + boxBytes("more", {}) + box)));
    EXPECT_FALSE(found(fileOfBoxes(kAnyChecksum + kAnyChecksum)));
}

TEST(Trailer, HasUpTo64Boxes) {
    Bytes boxes = kAnyChecksum;
    for (int i = 1; i < 64; ++i)
        boxes = boxes + boxBytes("b" + std::to_string(100 + i), {});
    ASSERT_TRUE(found(fileOfBoxes(boxes)));
    EXPECT_EQ(found(fileOfBoxes(boxes))->boxes.size(), 63U);
    EXPECT_FALSE(found(fileOfBoxes(boxes + boxBytes("more", {}))));
}

TEST(Trailer, MayHaveUnknownBoxesOfAnyName) {
    const std::string zeros(4, '\0');
    const auto trailer = found(fileOfBoxes(kAnyChecksum + boxBytes("\xFF\n\x1B\"", kUmlaut) +
                                           boxBytes(zeros, {}) + boxBytes("desc", {})));
    ASSERT_TRUE(trailer);
    ASSERT_EQ(trailer->boxes.size(), 3U);
    EXPECT_EQ(trailer->boxes[0].name, "\xFF\n\x1B\"");
    EXPECT_EQ(trailer->boxes[1].name, zeros);
    EXPECT_EQ(trailer->crc, 0x04030201U);
}

TEST(Trailer, OfManyPiecesHasTheChecksumOfOne) {
    test::Random random(1);
    Bytes stream(200000);
    std::ranges::generate(stream, [&] { return static_cast<unsigned char>(random.next()); });
    CTrailerWriter writer;
    writer.add("icc ", test::prefixOf(stream, 150000));
    const Bytes file = stream + writer.finish(stream);
    const auto trailer = found(file, stream.size());
    ASSERT_TRUE(trailer);
    EXPECT_EQ(trailer->crc,
              plainChecksum(stream + boxBytes("icc ", test::prefixOf(stream, 150000))));
    EXPECT_EQ(qmx::checksumOf(CGuardedBytes(file), *trailer), trailer->crc);
}

TEST(Trailer, OfFourGigabytesIsRefused) {
    CTrailerWriter writer;
    // Nobody reads so many bytes: they are refused before.
    const std::span<const unsigned char> many(kStream.data(), 0xFFFFFFFF - 28 - 8 + 1);
    EXPECT_THROW(writer.add("desc", many), std::length_error);
    writer.add("desc", kUmlaut);
    writer.add("max ", kThousand);
    EXPECT_TRUE(test::sameBytes(trailerOfTwoBoxes(), writer.finish(kStream)));
}

}  // namespace
