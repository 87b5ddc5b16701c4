#include <filesystem>
#include <gtest/gtest.h>

#include "info/CheckStream.h"
#include "info/DescribeFile.h"
#include "info/ReportOutput.h"
#include "support/LibraryCodec.h"
#include "support/StreamBuilder.h"
#include "support/TempDir.h"
#include "support/TrailedStream.h"

// What tesk-info --check says of files with a trailer.

namespace {

using qmx::InfoStatus;
using test::Bytes;
using test::trailed;

struct Checked {
    std::string state;
    InfoStatus status;

    bool operator==(const Checked&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Checked& checked) {
        return out << checked.state << ", exit status " << static_cast<int>(checked.status);
    }
};

const Checked kComplete = {"complete", InfoStatus::fine};
const Checked kDamaged = {"damaged", InfoStatus::invalid};
const Checked kDoubtful = {"doubtful", InfoStatus::invalid};

class TrailerReport : public testing::Test {
protected:
    Checked check(const Bytes& bytes) {
        test::writeFile(folder / "in.tk", bytes);
        const qmx::CStreamFile file((folder / "in.tk").c_str());
        if (!file.hasHeader() || !file.getHeader().isSupported())
            return {"unsupported", InfoStatus::noStream};
        qmx::StreamReport report = qmx::describeStream(file);
        qmx::checkStream(file, report);
        return {stateOf(report), checkedStatusOf(report)};
    }

    test::TempDir folder;
};

Bytes golden(const std::string& name) {
    return test::readFile(TESK_GOLDEN_FOLDER "/" + name);
}

TEST_F(TrailerReport, AStreamWithATrailerIsComplete) {
    for (const char* name : {"g8_one_1x1.c.tk", "rgb_noise_16x16.c.tk", "g16_noise16_32x32.c.tk"})
        EXPECT_EQ(check(trailed(golden(name))), kComplete) << name;
}

TEST_F(TrailerReport, EveryFlippedBitOfAFileIsFound) {
    int damaged = 0, doubtful = 0, others = 0;
    for (const char* name : {"g8_one_1x1.c.tk", "g8_zero_64x64.c.tk", "g8_flat_64x64.c.tk"}) {
        const Bytes file = trailed(golden(name));
        for (std::size_t bit = 0; bit < 8 * file.size(); ++bit) {
            Bytes flipped = file;
            flipped[bit / 8] ^= static_cast<unsigned char>(1U << bit % 8);
            const Checked found = check(flipped);
            EXPECT_NE(found.status, InfoStatus::fine) << name << ", bit " << bit;
            ++(found == kDamaged ? damaged : found == kDoubtful ? doubtful : others);
        }
    }
    EXPECT_GT(damaged, 500);
    EXPECT_GT(doubtful, 300);
    EXPECT_GT(others, 100);
}

TEST_F(TrailerReport, PrefixesEndAsThoseOfTheStream) {
    const Bytes stream = golden("g8_flat_64x64.c.tk");
    const Bytes file = trailed(stream);
    for (std::size_t bytes = stream.size() + 1; bytes < file.size(); ++bytes)
        EXPECT_EQ(check(test::prefixOf(file, bytes)), kDoubtful) << bytes;
    EXPECT_EQ(check(test::prefixOf(file, stream.size())), kComplete);
    EXPECT_EQ(check(test::prefixOf(file, stream.size() / 2)).state, "cut");
}

TEST_F(TrailerReport, OneBehindAStreamWithoutItsPaddingIsNone) {
    const Bytes stream = golden("g8_flat_64x64.c.tk");
    EXPECT_EQ(check(trailed(test::prefixOf(stream, stream.size() - 1))), kDoubtful);
}

/// A section that is longer than it should be swallows the trailer up to two set bits of its last byte,
/// which pass for an end mark: nothing follows it, and yet all is not well.
TEST_F(TrailerReport, AnEndMarkThatIsPartOfATrailerIsDoubtful) {
    const std::size_t trailerBytes = trailed({}).size();
    const std::size_t headerBits = 8 + 2 + 3 + 1 + 14;
    const std::size_t endBits = 8 * ((headerBits + 7) / 8 + trailerBytes) - 4;
    const Bytes stream =
        test::StreamBuilder(64, 64, 7).header(0, 0, false, endBits - headerBits).cut();
    const Bytes file = trailed(test::headed(qmx::makeHeader(1, 8, 64, 64), stream));
    test::writeFile(folder / "in.tk", file);
    const qmx::CStreamFile opened((folder / "in.tk").c_str());
    EXPECT_EQ(qmx::describeStream(opened).end, qmx::StreamEnd::complete);
    EXPECT_EQ(qmx::describeStream(opened).trailingBytes(), 0U);
    EXPECT_EQ(check(file), kDoubtful);
}

TEST_F(TrailerReport, AFileThatBecameShorterCannotBeRead) {
    // More than what is read ahead.
    Bytes file = golden("g8_one_1x1.c.tk");
    file.resize(40000);
    test::writeFile(folder / "in.tk", file);
    const qmx::CStreamFile opened((folder / "in.tk").c_str());
    std::filesystem::resize_file(folder / "in.tk", 20000);
    Bytes bytes(10);
    opened.read(19990, bytes);
    EXPECT_THROW(opened.read(39990, bytes), qmx::FileError);
}

}  // namespace
