#include "bitstream/CBitStreamer.h"

#include <gtest/gtest.h>
#include <memory>

#include "bitstream/BitTestSupport.h"
#include "bitstream/CBitChunkWriter.h"
#include "bitstream/CBitDecoder.h"
#include "bitstream/CBitEncoder.h"
#include "bitstream/CBitFileReader.h"
#include "bitstream/CBitFileWriter.h"
#include "bitstream/CBitInfiniteReader.h"
#include "bitstream/CBitLazyWriter.h"

namespace {

using qmx::CBitStreamer;

void expectKind(const CBitStreamer& stream, const char* type, char mode, const char* code) {
    EXPECT_STREQ(stream.getType(), type);
    EXPECT_EQ(stream.getMode(), mode);
    EXPECT_STREQ(stream.getCode(), code);
}

template <class Stream>
bool standsAtAMultipleOfEight(const std::unique_ptr<Stream>& stream) {
    return reinterpret_cast<std::uintptr_t>(stream.get()) % 8 == 0;
}

TEST(CBitStreamer, WritersTellTheirKind) {
    const test::ScratchFile file;
    expectKind(qmx::CBitWriter(nullptr, 0), "buffer", 'w', "raw");
    expectKind(qmx::CBitLazyWriter(8, true), "lazy", 'w', "raw");
    expectKind(qmx::CBitFileWriter(file.get()), "file", 'w', "raw");
    expectKind(qmx::CBitChunkWriter(), "dynamic", 'w', "raw");
}

TEST(CBitStreamer, ReadersTellTheirKind) {
    const test::ScratchFile file;
    expectKind(qmx::CBitReader(nullptr, 0), "buffer", 'r', "raw");
    expectKind(qmx::CBitInfiniteReader(), "buffer", 'r', "raw");
    expectKind(qmx::CBitFileReader(file.get()), "file", 'r', "raw");
}

TEST(CBitStreamer, CodersTellTheTypeOfTheirStreamAndClaimToWrite) {  // Quirk 2
    const test::ScratchFile file;
    qmx::CBitWriter buffer(nullptr, 0);
    qmx::CBitFileReader reader(file.get());
    qmx::CBitInfiniteReader zeros;
    qmx::CBitDecoder decoder;
    expectKind(qmx::CBitEncoder(&buffer), "buffer", 'w', "rleish");
    expectKind(qmx::CBitChunkEncoder(), "dynamic", 'w', "rleish");
    expectKind(decoder, "", 'w', "rleish");
    decoder.attach(&zeros);
    expectKind(decoder, "buffer", 'w', "rleish");
    EXPECT_THROW(decoder.attach(&reader), int);
    expectKind(decoder, "file", 'w', "rleish");
}

TEST(CBitStreamer, RawStreamsStoreAsManyBitsAsTheyCount) {
    unsigned char bytes[8] = {};
    qmx::CBitWriter writer(bytes, sizeof bytes);
    writer.writeInt(0, 13);
    EXPECT_EQ(writer.getStoredTotal(), 13U);
    qmx::CBitReader reader(bytes, sizeof bytes);
    reader.readInt(7);
    EXPECT_EQ(reader.getStoredTotal(), 7U);
    qmx::CBitChunkWriter chunks;
    for (int i = 0; i < 5000; ++i)
        chunks.writeInt(0, 64);
    EXPECT_EQ(chunks.getStoredTotal(), 320000U);
}

TEST(CBitStreamer, NameIsEmptyAtFirstAndThenACopy) {
    qmx::CBitWriter writer(nullptr, 0);
    EXPECT_STREQ(writer.getName(), "");
    std::string text = "sections of plane 1";
    writer.setName(text.c_str());
    text.assign(text.size(), '?');
    EXPECT_STREQ(writer.getName(), "sections of plane 1");
    writer.setName("x");
    EXPECT_STREQ(writer.getName(), "x");
}

TEST(CBitStreamer, NameMayBeSetToItself) {
    qmx::CBitInfiniteReader reader;
    reader.setName("order 3");
    reader.setName(reader.getName());
    EXPECT_STREQ(reader.getName(), "order 3");
}

TEST(CBitStreamer, ObjectsOnTheHeapStandAtMultiplesOfEight) {
    for (int i = 0; i < 50; ++i) {
        const test::ScratchFile file;
        EXPECT_TRUE(standsAtAMultipleOfEight(std::make_unique<qmx::CBitWriter>(nullptr, 0)));
        EXPECT_TRUE(standsAtAMultipleOfEight(std::make_unique<qmx::CBitFileWriter>(file.get())));
        EXPECT_TRUE(standsAtAMultipleOfEight(std::make_unique<qmx::CBitInfiniteReader>()));
        EXPECT_TRUE(standsAtAMultipleOfEight(std::make_unique<qmx::CBitChunkEncoder>()));
        EXPECT_TRUE(standsAtAMultipleOfEight(std::make_unique<qmx::CBitDecoder>()));
    }
}

TEST(CBitStreamer, AlignedStorageHasTheAlignmentThatWasAskedFor) {
    for (std::size_t alignment = 8; alignment <= 4096; alignment *= 2)
        for (std::size_t size = 1; size < 100; size += 7) {
            void* storage = qmx::allocateAligned(alignment, size);
            ASSERT_NE(storage, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(storage) % alignment, 0U);
            std::free(storage);
        }
}

}  // namespace
