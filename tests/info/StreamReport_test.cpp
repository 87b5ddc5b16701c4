#include "info/StreamReport.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "info/CheckStream.h"
#include "info/ReportOutput.h"
#include "support/Bytes.h"
#include "support/StreamBuilder.h"
#include "support/TempDir.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::StreamBuilder;

class StreamReportTest : public testing::Test {
protected:
    /// Returns: a file with the first bytes of stream.
    CStreamFile open(const Bytes& stream, std::size_t bytes) {
        test::writeFile(folder / "in.tk",
                        {stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(bytes)});
        return CStreamFile((folder / "in.tk").c_str());
    }
    CStreamFile open(const Bytes& stream) { return open(stream, stream.size()); }

    test::TempDir folder;
};

std::vector<std::string> goldenStreams() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(TESK_GOLDEN_FOLDER))
        if (entry.path().extension() == ".tk" && entry.file_size() >= sizeof(TKHeader))
            names.push_back(entry.path().string());
    return names;
}

Bytes streamOf(const TKHeader& header, const Bytes& behind) {
    Bytes stream(sizeof header + behind.size());
    std::memcpy(stream.data(), &header, sizeof header);
    std::copy(behind.begin(), behind.end(), stream.begin() + sizeof header);
    return stream;
}

/// Checks that header, top plane, sections and rest are all bits of the file, without a gap.
void expectAllBits(const CStreamFile& file, const StreamReport& report) {
    std::uint64_t next = report.topPlane ? 8 : 0;
    forEachSection(file, [&](const PlacedSection& section) {
        EXPECT_EQ(section.firstBit, next);
        next = section.endBit();
    });
    EXPECT_EQ(8 * sizeof(TKHeader) + next + report.restBits, 8 * report.fileBytes);
}

TEST_F(StreamReportTest, GoldenStreamsEndAsTheDecoderFinds) {
    int counts[3] = {};
    for (const std::string& name : goldenStreams()) {
        SCOPED_TRACE(name);
        const CStreamFile file(name.c_str());
        ASSERT_TRUE(file.hasHeader());
        const StreamReport report = describeStream(file);
        EXPECT_EQ(report.end, decodeStream(file));
        EXPECT_EQ(report.fileBytes, std::filesystem::file_size(name));
        expectAllBits(file, report);
        ++counts[static_cast<int>(report.end)];
    }
    for (const int count : counts)
        EXPECT_GT(count, 5);
}

TEST_F(StreamReportTest, PrefixesEndAsTheDecoderFinds) {
    for (const char* name : {"/rgb_noise_16x16.c.tk", "/g8_flat_5x5.c.tk", "/g8_one_1x1.c.tk"}) {
        const Bytes stream = test::readFile(TESK_GOLDEN_FOLDER + std::string(name));
        for (std::size_t bytes = sizeof(TKHeader); bytes <= stream.size(); ++bytes) {
            SCOPED_TRACE(name + std::to_string(bytes));
            const CStreamFile file = open(stream, bytes);
            const StreamReport report = describeStream(file);
            EXPECT_EQ(report.end, decodeStream(file));
            expectAllBits(file, report);
        }
    }
}

TEST_F(StreamReportTest, AFirstPictureNeedsExactlyItsBytes) {
    int found = 0;
    for (const char* name : {"/g8_photo_64x64.c.tk", "/rgb_photo_33x65.c.tk",
                             "/g16_photo16_96x64.c.tk", "/g8_photo_261x1026.c.tk"}) {
        SCOPED_TRACE(name);
        const Bytes stream = test::readFile(TESK_GOLDEN_FOLDER + std::string(name));
        const std::uint64_t bytes = describeStream(open(stream)).firstPictureBytes;
        ASSERT_GT(bytes, sizeof(TKHeader));
        EXPECT_EQ(describeStream(open(stream, bytes)).firstPictureBytes, bytes);
        EXPECT_EQ(describeStream(open(stream, bytes - 1)).firstPictureBytes, 0U);
        ++found;
    }
    EXPECT_EQ(found, 4);
}

TEST_F(StreamReportTest, BytesBehindTheEndAreNotOfTheStream) {
    Bytes stream = test::readFile(TESK_GOLDEN_FOLDER "/g8_photo_64x64.c.tk");
    const std::size_t bytes = stream.size();
    EXPECT_EQ(describeStream(open(stream)).trailingBytes(), 0U);
    EXPECT_FALSE(describeStream(open(stream)).isDoubtful());
    stream.resize(bytes + 5);
    const StreamReport report = describeStream(open(stream));
    EXPECT_EQ(report.streamBytes, bytes);
    EXPECT_EQ(report.trailingBytes(), 5U);
    EXPECT_EQ(report.end, StreamEnd::complete);
    EXPECT_TRUE(report.isDoubtful());
    // Padding that is missing is not missed.
    const StreamReport shorter = describeStream(open(stream, bytes - 1));
    EXPECT_EQ(shorter.end, StreamEnd::complete);
    EXPECT_EQ(shorter.streamBytes, bytes - 1);
    EXPECT_FALSE(shorter.isDoubtful());
}

TEST_F(StreamReportTest, CountsSections) {
    const Bytes sections = StreamBuilder(2, 2, 3).n(0, "").n(0, "1011").u(0, "").end();
    const StreamReport report = describeStream(open(streamOf(makeHeader(2, 13, 2, 2), sections)));
    EXPECT_EQ(report.sections, 3U);
    EXPECT_EQ(report.emptySections, 2U);
    EXPECT_EQ(report.levels, 0);
    EXPECT_EQ(report.coefficientBits, 32);
    EXPECT_EQ(report.topPlane, 3);
    EXPECT_EQ(report.samples(), 4U);
    EXPECT_DOUBLE_EQ(report.bitsPerSample(), 2.0 * static_cast<double>(report.fileBytes));
}

TEST_F(StreamReportTest, AHeaderAloneIsACutStream) {
    const CStreamFile file = open(streamOf(makeHeader(3, 8, 65535, 65535), {}));
    const StreamReport report = describeStream(file);
    EXPECT_EQ(report.end, StreamEnd::cut);
    EXPECT_FALSE(report.topPlane.has_value());
    EXPECT_EQ(report.sections, 0U);
    EXPECT_EQ(report.restBits, 0U);
    EXPECT_EQ(report.levels, 5);
    EXPECT_EQ(report.samples(), std::uint64_t{3} * 65535 * 65535);
}

TEST_F(StreamReportTest, FilesWithoutAHeaderHaveNone) {
    const Bytes stream = streamOf(makeHeader(1, 8, 2, 2), {});
    EXPECT_TRUE(open(stream).hasHeader());
    for (const std::size_t bytes : {0U, 4U, 15U})
        EXPECT_FALSE(open(stream, bytes).hasHeader()) << bytes;
    Bytes other = stream;
    other[3] = 'X';
    EXPECT_FALSE(open(other).hasHeader());
}

TEST_F(StreamReportTest, WhatCannotBeReadIsThrown) {
    EXPECT_THROW(CStreamFile((folder / "nothing").c_str()), FileError);
    EXPECT_THROW(CStreamFile((folder / ".").c_str()), FileError);
}

}  // namespace
