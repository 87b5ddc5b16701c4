#include "container/FileIo.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/LibraryCodec.h"
#include "support/TempDir.h"

namespace {

using namespace qmx;
using test::Bytes;

template <class Work>
FileError errorOf(Work work) {
    try {
        work();
    } catch (const FileError& error) {
        return error;
    }
    ADD_FAILURE() << "nothing thrown";
    return {FileRole::temporary, 0};
}

FilePtr open(const std::string& name, const char* mode) {
    return FilePtr(std::fopen(name.c_str(), mode));
}

TEST(FileIo, AFullDiskShowsWhenTheFileIsClosed) {
    FilePtr full = open("/dev/full", "wb");
    writeAll(full.get(), FileRole::output, "abc", 3);
    const FileError error = errorOf([&] { closeOutput(std::move(full)); });
    EXPECT_EQ(error.role, FileRole::output);
    EXPECT_EQ(error.errorNumber, ENOSPC);
}

TEST(FileIo, AFullDiskShowsAtOnceForManyBytes) {
    const FilePtr full = open("/dev/full", "wb");
    const Bytes many(1 << 20);
    const FileError error =
        errorOf([&] { writeAll(full.get(), FileRole::temporary, many.data(), many.size()); });
    EXPECT_EQ(error.role, FileRole::temporary);
    EXPECT_EQ(error.errorNumber, ENOSPC);
}

TEST(FileIo, TheEndOfAFileIsNoErrorButAFolderIs) {
    const test::File shortFile = test::fileOf({1, 2, 3});
    unsigned char bytes[10] = {};
    EXPECT_EQ(readUpTo(shortFile.get(), bytes, sizeof bytes), 3U);
    EXPECT_EQ(bytes[2], 3);
    const FilePtr folder = open("/", "rb");
    const FileError error = errorOf([&] { readUpTo(folder.get(), bytes, sizeof bytes); });
    EXPECT_EQ(error.role, FileRole::input);
    EXPECT_EQ(error.errorNumber, EISDIR);
}

TEST(FileIo, BytesAreLeftBehindWhereARegularFileStands) {
    const test::TempDir folder;
    test::writeFile(folder / "file", {1, 2, 3});
    const FilePtr file = open(folder / "file", "rb");
    EXPECT_EQ(bytesLeft(file.get()), 3U);
    unsigned char bytes[2];
    readUpTo(file.get(), bytes, sizeof bytes);
    EXPECT_EQ(bytesLeft(file.get()), 1U);
    fseeko(file.get(), 10, SEEK_SET);
    EXPECT_EQ(bytesLeft(file.get()), 0U);
    for (const char* other : {"/dev/zero", "/"})
        EXPECT_EQ(bytesLeft(open(other, "rb").get()), std::nullopt) << other;
}

TEST(FileIo, AFileThatCanSeekStaysAsItIs) {
    const test::TempDir folder;
    test::writeFile(folder / "file", {1, 2, 3});
    FilePtr file = open(folder / "file", "rb");
    std::FILE* before = file.get();
    EXPECT_EQ(makeSeekable(std::move(file), "xy", 2).get(), before);
}

TEST(FileIo, APipeIsCopiedBehindThePrefix) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "hello", 5), 5);
    close(ends[1]);
    const FilePtr file = makeSeekable(FilePtr(fdopen(ends[0], "rb")), "xy", 2);
    EXPECT_EQ(std::ftell(file.get()), 2);
    unsigned char bytes[10] = {};
    EXPECT_EQ(readUpTo(file.get(), bytes, sizeof bytes), 5U);
    EXPECT_EQ(bytes[0], 'h');
    std::rewind(file.get());
    EXPECT_EQ(readUpTo(file.get(), bytes, sizeof bytes), 7U);
    EXPECT_EQ(bytes[0], 'x');
}

}  // namespace
