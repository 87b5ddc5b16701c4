#include "container/CRawFileRows.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "bitstream/Status.h"
#include "support/Bytes.h"
#include "support/TempDir.h"

namespace {

using namespace qmx;
using test::Bytes;

/// Rows of 2 pixels, with bytes that count up.
const TKHeader kHeader = makeHeader(1, 8, 2, 3);
const Bytes kRows = {1, 2, 3, 4, 5, 6};

Bytes rowOf(CRawFileRows& rows, int r) {
    const unsigned char* row = rows.row(r);
    return {row, row + 2};
}

void expectRowsTwice(CRawFileRows& rows) {
    for (int pass = 0; pass < 2; ++pass)
        for (int r = 0; r < 3; ++r)
            EXPECT_EQ(rowOf(rows, r), Bytes(kRows.begin() + 2 * r, kRows.begin() + 2 * r + 2))
                << pass;
}

FilePtr pipeOf(const Bytes& bytes) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(ends[1]);
    return FilePtr(fdopen(ends[0], "rb"));
}

class CRawFileRowsTest : public testing::Test {
protected:
    FilePtr fileOf(const Bytes& bytes) {
        test::writeFile(folder / "raw", bytes);
        return FilePtr(std::fopen((folder / "raw").c_str(), "rb"));
    }

    test::TempDir folder;
};

TEST_F(CRawFileRowsTest, AFileIsReadAgain) {
    CRawFileRows rows(kHeader, fileOf(kRows));
    expectRowsTwice(rows);
}

TEST_F(CRawFileRowsTest, AFileIsReadAgainFromWhereItStood) {
    Bytes bytes = {9, 9, 9};
    bytes.insert(bytes.end(), kRows.begin(), kRows.end());
    FilePtr file = fileOf(bytes);
    std::fseek(file.get(), 3, SEEK_SET);
    CRawFileRows rows(kHeader, std::move(file));
    expectRowsTwice(rows);
}

TEST_F(CRawFileRowsTest, RowsOfAPipeAreKept) {
    CRawFileRows rows(kHeader, pipeOf(kRows));
    expectRowsTwice(rows);
}

TEST_F(CRawFileRowsTest, BeginsAgainAtAnyRow) {
    CRawFileRows ofFile(kHeader, fileOf(kRows));
    CRawFileRows ofPipe(kHeader, pipeOf(kRows));
    for (CRawFileRows* rows : {&ofFile, &ofPipe})
        for (const int r : {0, 0, 1, 0, 1, 2, 0})
            EXPECT_EQ(rowOf(*rows, r).front(), 2 * r + 1);
}

TEST_F(CRawFileRowsTest, ARowThatLacksAByteThrowsThree) {
    const Bytes five = test::prefixOf(kRows, 5);
    CRawFileRows ofFile(kHeader, fileOf(five));
    CRawFileRows ofPipe(kHeader, pipeOf(five));
    for (CRawFileRows* rows : {&ofFile, &ofPipe}) {
        rows->row(0);
        rows->row(1);
        EXPECT_THROW(rows->row(2), int);
    }
}

}  // namespace
