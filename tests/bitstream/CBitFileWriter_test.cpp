#include "bitstream/CBitFileWriter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitFileWriter;
using qmx::kThrownWriteFailed;
using test::Bits;
using test::Bytes;
using test::ScratchFile;

constexpr std::uint64_t kBufferBits = 8 * qmx::kFileBufferBytes;

/// A file that records how many bytes each write brings, and refuses the first `refusals` writes.
class RecordingFile {
public:
    explicit RecordingFile(int writesToRefuse = 0) : refusals(writesToRefuse) {
        file = fopencookie(this, "w", {nullptr, &RecordingFile::take, nullptr, nullptr});
        std::setvbuf(file, nullptr, _IONBF, 0);
    }
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;
    ~RecordingFile() { std::fclose(file); }

    std::FILE* file;
    std::vector<std::size_t> sizes;
    Bytes bytes;

private:
    static ssize_t take(void* self, const char* data, std::size_t size) {
        auto* recorder = static_cast<RecordingFile*>(self);
        if (recorder->refusals-- > 0) return 0;
        recorder->sizes.push_back(size);
        recorder->bytes.insert(recorder->bytes.end(), data, data + size);
        return static_cast<ssize_t>(size);
    }

    int refusals;
};

std::FILE* openFullDevice() {
    std::FILE* file = std::fopen("/dev/full", "wb");
    if (file != nullptr) std::setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

TEST(CBitFileWriter, FileReceivesTheBytesThatHoldTheBits) {
    for (std::uint64_t count : {0U, 1U, 8U, 13U, 63U, 64U, 65U, 32767U, 32768U, 32769U, 32831U,
                                32832U, 40000U, 65536U, 65537U}) {
        const Bits bits = test::randomBits(count, count);
        const ScratchFile file;
        {
            CBitFileWriter writer(file.get());
            test::writeBits(writer, bits);
            EXPECT_EQ(writer.getTotal(), count);
        }
        EXPECT_TRUE(test::sameBytes(test::packed(bits), file.bytes())) << count << " bits";
    }
}

TEST(CBitFileWriter, TotalCountsEveryBitAcrossBuffers) {
    const ScratchFile file;
    CBitFileWriter writer(file.get());
    std::uint64_t count = 0;
    for (const test::Field& field : test::randomFields(100000, 1, 0, 64)) {
        writer.writeInt(field.value, field.width);
        count += static_cast<std::uint64_t>(field.width);
        ASSERT_EQ(writer.getTotal(), count);
    }
    EXPECT_EQ(writer.getStoredTotal(), 100000U);
}

TEST(CBitFileWriter, FullBufferIsWrittenInOnePieceWhenTheNextBitArrives) {
    RecordingFile recorder;
    {
        CBitFileWriter writer(recorder.file);
        test::writeBits(writer, Bits(kBufferBits, true));
        EXPECT_TRUE(recorder.sizes.empty());
        writer.writeBit(1);
        EXPECT_EQ(recorder.sizes, std::vector<std::size_t>{4096});
        EXPECT_EQ(writer.getTotal(), kBufferBits + 1);
    }
    EXPECT_EQ(recorder.sizes, (std::vector<std::size_t>{4096, 1}));
    EXPECT_EQ(recorder.bytes.back(), 1);
}

TEST(CBitFileWriter, FullBufferWithoutAFurtherBitIsWrittenByTheDestructor) {
    RecordingFile recorder;
    {
        CBitFileWriter writer(recorder.file);
        test::writeBits(writer, Bits(kBufferBits, true));
    }
    EXPECT_EQ(recorder.sizes, std::vector<std::size_t>{4096});
    EXPECT_TRUE(test::sameBytes(Bytes(4096, 0xFF), recorder.bytes));
}

TEST(CBitFileWriter, FlushWritesNothingToTheFile) {
    RecordingFile recorder;
    CBitFileWriter writer(recorder.file);
    writer.writeInt(5, 13);
    writer.flush();
    EXPECT_TRUE(recorder.sizes.empty());
    EXPECT_EQ(writer.getTotal(), 13U);
}

TEST(CBitFileWriter, BytesOfTheCallerStayInFront) {
    const ScratchFile file;
    std::fputs("header", file.get());
    {
        CBitFileWriter writer(file.get());
        writer.writeInt(0x1234, 13);
    }
    std::fputc('!', file.get());
    EXPECT_TRUE(test::sameBytes({'h', 'e', 'a', 'd', 'e', 'r', 0x34, 0x12, '!'}, file.bytes()));
}

TEST(CBitFileWriter, ClosesTheFileOnlyIfTold) {
    ScratchFile scratch;
    const int descriptor = fileno(scratch.get());
    { CBitFileWriter writer(scratch.get()); }
    EXPECT_NE(fcntl(descriptor, F_GETFD), -1);
    {
        CBitFileWriter writer(scratch.release(), true);
        writer.writeInt(1, 1);
    }
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    EXPECT_TRUE(test::sameBytes({1}, scratch.bytes()));
}

TEST(CBitFileWriter, WithoutAFileTheFirstFullBufferThrowsFive) {
    CBitFileWriter writer(nullptr);
    test::writeBits(writer, Bits(kBufferBits, true));
    EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), kThrownWriteFailed);
}

TEST(CBitFileWriter, WithoutAFileAShortStreamIsDroppedInSilence) {
    const auto writeShortStream = [] {
        CBitFileWriter writer(nullptr, true);
        writer.writeInt(1, 60);
    };
    EXPECT_EQ(test::thrownBy(writeShortStream), 0);
}

TEST(CBitFileWriter, DeviceWithoutSpaceThrowsFive) {
    // The destructor's write has to succeed, so only the file behind the descriptor is full.
    const ScratchFile scratch;
    std::setvbuf(scratch.get(), nullptr, _IONBF, 0);
    const int descriptor = fileno(scratch.get());
    const int good = dup(descriptor);
    const int full = open("/dev/full", O_WRONLY);
    {
        CBitFileWriter writer(scratch.get());
        test::writeBits(writer, Bits(kBufferBits, true));
        dup2(full, descriptor);
        EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), kThrownWriteFailed);
        EXPECT_EQ(test::thrownBy([&] { writer.flushBuffer(); }), kThrownWriteFailed);
        dup2(good, descriptor);
    }
    close(good);
    close(full);
    EXPECT_TRUE(test::sameBytes(Bytes(4096, 0xFF), scratch.bytes()));
}

TEST(CBitFileWriter, WriteAfterAFailureTakesNoMoreThanTheBuffer) {
    for (int further : {0, 1, 7, 60, 62, 63, 64, 100}) {
        RecordingFile recorder(1);
        {
            CBitFileWriter writer(recorder.file);
            test::writeBits(writer, Bits(kBufferBits, true));
            EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), kThrownWriteFailed);
            test::writeBits(writer, Bits(static_cast<std::size_t>(further), true));
        }
        EXPECT_EQ(recorder.sizes, std::vector<std::size_t>{4096}) << further << " bits later";
        EXPECT_TRUE(test::sameBytes(Bytes(4096, 0xFF), recorder.bytes));
    }
}

TEST(CBitFileWriter, BufferHandedOverEarlyBringsOnlyItsWholeWords) {
    RecordingFile recorder;
    {
        CBitFileWriter writer(recorder.file);
        test::writeBits(writer, Bits(70, true));
        writer.flushBuffer();
        EXPECT_EQ(recorder.sizes, std::vector<std::size_t>{8});
        EXPECT_EQ(writer.getTotal(), 70U);
    }
    EXPECT_TRUE(test::sameBytes(test::packed(Bits(70, true)), recorder.bytes));
}

TEST(CBitFileWriterDeathTest, ShortWriteInTheDestructorEndsTheProcess) {
    const auto loseShortStream = [] {
        CBitFileWriter writer(openFullDevice(), true);
        writer.writeInt(1, 13);
    };
    EXPECT_DEATH(loseShortStream(), "terminat");
}

TEST(CBitFileWriterDeathTest, BytesThatTheCloseLosesEndTheProcess) {
    const auto loseAtClose = [] {
        CBitFileWriter writer(std::fopen("/dev/full", "wb"), true);
        writer.writeInt(1, 13);
    };
    EXPECT_DEATH(loseAtClose(), "terminat");
}

TEST(CBitFileWriterDeathTest, DestructorAfterAFailedBufferEndsTheProcessAsWell) {
    const auto loseLongStream = [] {
        CBitFileWriter writer(openFullDevice(), true);
        test::writeBits(writer, Bits(kBufferBits, true));
        test::thrownBy([&] { writer.writeBit(1); });
    };
    EXPECT_DEATH(loseLongStream(), "terminat");
}

}  // namespace
