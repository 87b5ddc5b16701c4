// Streams that ask for more than they give: a time limit for all of them, memory for none.

#include <chrono>
#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/CountingHeap.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;

/// Ten megabytes of empty sections take a tenth of a second, several under a sanitizer.
constexpr double kSeconds = 15;
constexpr std::size_t kHostileBytes = 10000000;

class Stopwatch {
public:
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

/// Returns: a top plane, then empty sections of one kind until the stream has its length. The
/// sections of 8 copies fill whole bytes.
Bytes emptySections(const TKHeader& header, int topPlane, int order, bool refinement) {
    test::StreamBuilder eight(header.xSize, header.ySize, topPlane);
    for (int i = 0; i < 8; ++i)
        eight.header(0, order, refinement, 0);
    const Bytes first = eight.cut();
    Bytes body = first;
    while (body.size() < kHostileBytes)
        body.insert(body.end(), first.begin() + 1, first.end());
    return test::headed(header, body);
}

struct Flood {
    int bytesPerPixel;
    int bitsPerPixel;
    int topPlane;
    int order;
    bool refinement;
};

/// Planes that the tables have, planes that they lack, no planes at all.
constexpr Flood kFloods[] = {{1, 8, 7, 0, false},  {1, 8, 7, 5, false},    {1, 8, 7, 5, true},
                             {3, 8, 61, 3, false}, {2, 16, 254, 5, false}, {2, 16, 255, 5, true}};

TEST(HostileStreams, MegabytesOfEmptySectionsAreACutStreamOfZeros) {
    const test::Codec codec = test::makeCodec();
    for (const Flood& flood : kFloods) {
        const TKHeader header = makeHeader(flood.bytesPerPixel, flood.bitsPerPixel, 64, 64);
        const Bytes stream = emptySections(header, flood.topPlane, flood.order, flood.refinement);
        const Stopwatch watch;
        const test::Call call = test::decompressCall(codec.get(), stream);
        EXPECT_EQ(call.status, TESK_CUT);
        EXPECT_EQ(call.bytes, Bytes(header.rawBytes()));
        const test::Outcome object = test::decompressObject(stream);
        EXPECT_EQ(object.status, kCut);
        EXPECT_EQ(object.bytes, call.bytes);
        EXPECT_LT(watch.seconds(), kSeconds);
    }
}

TEST(HostileStreams, ManySectionsTakeNoMoreMemoryThanFew) {
    const test::Codec codec = test::makeCodec();
    const TKHeader header = makeHeader(1, 8, 64, 64);
    const Bytes many = emptySections(header, 7, 5, false);
    const test::Call few = test::decompressCall(codec.get(), test::prefixOf(many, 100));
    ASSERT_EQ(few.status, TESK_CUT);
    EXPECT_EQ(test::decompressCall(codec.get(), many).result.peak_memory_bytes,
              few.result.peak_memory_bytes);
}

TEST(HostileStreams, TheLargestHeaderIsRefusedAtOnceByEitherLimit) {
    for (const int bytesPerPixel : {1, 2, 3})
        for (const Bytes& behind : {Bytes(), Bytes{7}}) {
            const Bytes stream = test::headed(makeHeader(bytesPerPixel, 8, 65535, 65535), behind);
            for (const bool countsPixels : {true, false}) {
                test::CountingHeap heap;
                tesk_options options = heap.options();
                if (countsPixels) {
                    options.max_pixels = 100000000;
                } else {
                    options.max_memory_bytes = 500000;
                }
                const test::Codec codec = test::makeCodec(&options);
                heap.restart();
                unsigned char pixel = 0xA5;
                const Stopwatch watch;
                // The buffer is a lie that nobody may come to.
                EXPECT_EQ(tesk_decompress(codec.get(), stream.data(), stream.size(), &pixel,
                                          std::size_t{1} << 40, 0, nullptr),
                          TESK_LIMIT_EXCEEDED);
                EXPECT_LT(watch.seconds(), 1);
                EXPECT_EQ(heap.calls, 0U);
                EXPECT_EQ(pixel, 0xA5);
            }
        }
}

}  // namespace
