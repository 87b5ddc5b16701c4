#include "coding/decode/CPlaneDecoder.h"

#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/LibraryCodec.h"
#include "support/StreamBuilder.h"

namespace {

TEST(CPlaneDecoder, AStreamWithEveryBitPlaneStaysInsideTheBoundOfMemory) {
    constexpr int kSide = 64;
    for (const int bits : {8, 16}) {
        const int planes = bits == 8 ? 16 : 32;
        test::StreamBuilder builder(kSide, kSide, planes - 1);
        for (int order = 0; order <= 5; ++order)
            for (int p = 0; p < planes; ++p)
                builder.n(order, "1 0 1").u(order, "1");
        const qmx::TKHeader header = qmx::makeHeader(bits == 8 ? 1 : 2, bits, kSide, kSide);
        const test::Bytes stream = test::headed(header, builder.end());
        const test::Codec codec = test::makeCodec();
        const test::Call call = test::decompressCall(codec.get(), stream);
        ASSERT_EQ(call.status, TESK_OK);
        const std::size_t bound =
            bits == 8 ? 62000 + 2 * kSide * kSide : 125000 + 4 * kSide * kSide;
        EXPECT_LE(call.result.peak_memory_bytes, bound);
        EXPECT_GT(call.result.peak_memory_bytes, bound / 10 * 9) << "the windows are counted";
    }
}

}  // namespace
