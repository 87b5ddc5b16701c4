#include <gtest/gtest.h>
#include <new>

#include "api/CTeskCompressor.h"
#include "api/CTeskDecompressor.h"
#include "support/LibraryCodec.h"
#include "support/ProcessHeap.h"

// The objects of the memory codec without memory.

namespace {

using test::Bytes;
using test::Content;
using test::ProcessHeap;
using test::processHeap;
using test::RawImage;

/// Lets work run with ever more allocations until it succeeds. Checks that nothing stays behind.
/// Returns: how many allocations were not enough.
template <class Work>
std::size_t failuresOf(Work work) {
    for (std::size_t allowed = 0;; ++allowed) {
        bool failed = false;
        processHeap = {};
        processHeap.failFrom = allowed;
        processHeap.isWatched = true;
        try {
            work();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        processHeap.isWatched = false;
        EXPECT_EQ(processHeap.live, 0) << "after " << allowed << " allocations";
        if (!failed) return allowed;
    }
}

TEST(ObjectMemory, EveryFailureOfACompressionIsBadAllocAndLeavesNothing) {
    for (const int bytes : {1, 2, 3}) {
        const RawImage image = test::makeImage(Content::photo, bytes, bytes == 2 ? 16 : 8, 40, 30);
        const std::size_t failures = failuresOf([&] {
            qmx::CTeskCompressor compressor(image.width, image.height, image.bitsPerPixel,
                                            image.bytesPerPixel, image.bytes.data(), 100000, true);
            EXPECT_EQ(compressor.compress(), qmx::kComplete);
        });
        EXPECT_GT(failures, 10U);
    }
}

TEST(ObjectMemory, EveryFailureOfADecompressionIsBadAllocAndLeavesNothing) {
    for (const int bytes : {1, 2, 3}) {
        const RawImage image = test::makeImage(Content::photo, bytes, bytes == 2 ? 16 : 8, 40, 30);
        const Bytes stream = test::encode(image);
        Bytes pixels(image.bytes.size());
        const std::size_t failures = failuresOf([&] {
            qmx::CTeskDecompressor decompressor(stream.data(), stream.size());
            EXPECT_EQ(decompressor.decompress(pixels.data(), pixels.size()), qmx::kComplete);
        });
        EXPECT_GT(failures, 4U);
        EXPECT_EQ(pixels, image.bytes);
    }
}

}  // namespace
