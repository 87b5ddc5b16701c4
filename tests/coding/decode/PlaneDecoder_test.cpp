#include "coding/decode/PlaneDecoder.h"

#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/CpuLevels.h"
#include "support/LibraryCodec.h"
#include "support/Planes.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;

constexpr int kTop = 5;
/// A side of 3 leaves one order, in raster order.
constexpr int kWidth = 3;
constexpr int kHeight = 400;

/// Random sections of one colour plane and order, all cut behind the n sections.
struct Sections {
    explicit Sections(std::uint64_t seed) {
        test::Random random(seed);
        counters.reset(kTop);
        for (int p = kTop; p >= 0; --p) {
            counters.take(0, 0, false);
            bytes[p].resize(200);
            for (auto& byte : bytes[p])
                byte = static_cast<unsigned char>(random.below(4) == 0 ? random.next() : 0x10);
            CBitReader source(bytes[p].data(), bytes[p].size());
            CBitInfiniteReader& reader = streams.significances.bitPlanes(0, 0)[p];
            reader.create(&source, 1);
            decoder(p).attach(&reader);
        }
    }
    CBitDecoder& decoder(int p) { return streams.decoders.bitPlanes(0, 0)[p]; }

    test::Bytes bytes[kTop + 1];
    DecoderStreams<short> streams;
    SectionCounters counters;
};

/// One coefficient as docs/format.md has it, 13.2 and 13.3.
short decodeLiterally(Sections& sections) {
    for (int p = kTop; p >= 0; --p) {
        CBitDecoder& decoder = sections.decoder(p);
        if (decoder.getRun() > 0) {
            decoder.setRun(decoder.getRun() - 1);
            continue;
        }
        const bool negative = decoder.readRawBit() != 0;
        decoder.readRun();
        const int magnitude = (1 << p) + (p >= 2 ? 1 << (p - 2) : 0);
        return static_cast<short>(negative ? -magnitude : magnitude);
    }
    return 0;
}

using PlaneDecoderTest = test::AtCpuLevel;

TEST_P(PlaneDecoderTest, CoefficientsAndTheRunsBehindEachRowAreThoseOfTheDecoders) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Sections ahead(seed);
        Sections literal(seed);
        CImageData<short> image(kWidth, kHeight, 1);
        image.clear();
        PlaneDecoder<short> decoder(ahead.streams, ahead.counters, 0, kTop, 0,
                                    image.samplesPerPlane(), std::pmr::new_delete_resource());
        for (int r = 0; r < kHeight; ++r) {
            decoder.decodeRow(decodeKernels<short>(GetParam()), r, image.row(0, r), image.x);
            decoder.storeRuns();
            for (int c = 0; c < kWidth; ++c)
                ASSERT_EQ(image.row(0, r)[c], decodeLiterally(literal)) << r;
            for (int p = kTop; p >= 0; --p)
                ASSERT_EQ(ahead.decoder(p).getRun(), literal.decoder(p).getRun()) << r;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, PlaneDecoderTest, test::allCpuLevels(), test::cpuLevelName());

TEST(PlaneDecoder, AStreamWithEveryBitPlaneStaysInsideTheBoundOfMemory) {
    constexpr int kSide = 64;
    for (const int bits : {8, 16}) {
        const int planes = bits == 8 ? 16 : 32;
        test::StreamBuilder builder(kSide, kSide, planes - 1);
        for (int order = 0; order <= 5; ++order)
            for (int p = 0; p < planes; ++p)
                builder.n(order, "1 0 1").u(order, "1");
        const qmx::TKHeader header = test::headerOf({bits == 8 ? 1 : 2, bits, kSide, kSide, {}});
        const test::Bytes sections = builder.end();
        test::Bytes stream(sizeof header + sections.size());
        std::memcpy(stream.data(), &header, sizeof header);
        std::copy(sections.begin(), sections.end(), stream.begin() + sizeof header);
        const test::Codec codec = test::makeCodec();
        const test::Call call = test::decompressCall(codec.get(), stream);
        ASSERT_EQ(call.status, TESK_OK);
        const std::size_t bound =
            bits == 8 ? 150000 + 2 * kSide * kSide : 300000 + 4 * kSide * kSide;
        EXPECT_LE(call.result.peak_memory_bytes, bound);
        EXPECT_GT(call.result.peak_memory_bytes, bound / 10 * 9) << "the windows are counted";
    }
}

}  // namespace
