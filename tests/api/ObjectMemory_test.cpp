#include <gtest/gtest.h>
#include <new>

#include "api/CTeskCompressor.h"
#include "api/CTeskDecompressor.h"
#include "api/CompressorLoss.h"
#include "container/Loss.h"
#include "support/LibraryCodec.h"
#include "support/ProcessHeap.h"

// The objects of the memory codec without memory.

namespace {

using test::Bytes;
using test::Content;
using test::ProcessHeap;
using test::processHeap;
using test::RawImage;

constexpr unsigned long kAmpleBudget = 100000;

/// Which allocations fail: one and all later ones, or one alone.
enum class Failing { fromOneOn, oneAlone };

class ObjectMemory : public testing::TestWithParam<Failing> {
protected:
    /// Lets work run once for each of its allocations, which fails, and once without a failure.
    /// Checks that each failure ends it with std::bad_alloc and that nothing stays behind.
    /// Returns: the number of allocations.
    template <class Work>
    static std::size_t failuresOf(Work work) {
        for (std::size_t number = 0;; ++number) {
            processHeap = {};
            processHeap.failFrom = number;
            processHeap.failsOnce = GetParam() == Failing::oneAlone;
            processHeap.isWatched = true;
            const bool failed = !succeeds(work);
            processHeap.isWatched = false;
            EXPECT_EQ(processHeap.live, 0) << "allocation " << number;
            const bool wasReached = processHeap.allocations > number;
            EXPECT_EQ(failed, wasReached) << "allocation " << number;
            if (!wasReached) return number;
        }
    }

    static std::vector<RawImage> images() {
        return {test::makeImage(Content::photo, 1, 8, 40, 30),
                test::makeImage(Content::photo, 2, 16, 40, 30),
                test::makeImage(Content::photo, 3, 8, 40, 30)};
    }

private:
    template <class Work>
    static bool succeeds(Work& work) {
        try {
            work();
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
};

qmx::CTeskCompressor compressorOf(const RawImage& image, bool ownsBlock) {
    return {image.width,        image.height, image.bitsPerPixel, image.bytesPerPixel,
            image.bytes.data(), kAmpleBudget, ownsBlock};
}

TEST_P(ObjectMemory, EveryFailureOfACompressionIsBadAllocAndLeavesNothing) {
    for (const RawImage& image : images()) {
        const std::size_t failures = failuresOf([&] {
            qmx::CTeskCompressor compressor = compressorOf(image, true);
            EXPECT_EQ(compressor.compress(), qmx::kComplete);
        });
        EXPECT_GT(failures, 10U);
    }
}

TEST_P(ObjectMemory, AFailedCompressionLeavesItsCallerNoBlock) {
    for (const RawImage& image : images())
        failuresOf([&] {
            qmx::CTeskCompressor compressor = compressorOf(image, false);
            try {
                EXPECT_EQ(compressor.compress(), qmx::kComplete);
            } catch (const std::bad_alloc&) {
                EXPECT_EQ(compressor.getBlock(), nullptr);
                throw;
            }
            compressor.freeBlock(compressor.getBlock());
        });
}

TEST_P(ObjectMemory, EveryFailureOfTheSearchForALossIsBadAllocAndLeavesNothing) {
    // A stream in doubt: it is decoded and compared.
    const RawImage thin = test::makeImage(Content::photo, 3, 8, 3, 40);
    const std::size_t failures = failuresOf([&] {
        qmx::CTeskCompressor compressor = compressorOf(thin, true);
        EXPECT_EQ(compressor.compress(), qmx::kComplete);
        EXPECT_EQ(qmx::findLoss(compressor).loss, qmx::Loss::thinImage);
    });
    const std::size_t failuresBefore = failuresOf([&] {
        qmx::CTeskCompressor compressor = compressorOf(thin, true);
        compressor.compress();
    });
    EXPECT_GT(failures, failuresBefore + 4);
}

TEST_P(ObjectMemory, EveryFailureOfADecompressionIsBadAllocAndLeavesNothing) {
    for (const RawImage& image : images()) {
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

INSTANTIATE_TEST_SUITE_P(Failing, ObjectMemory,
                         testing::Values(Failing::fromOneOn, Failing::oneAlone),
                         [](const auto& instance) {
                             return instance.param == Failing::fromOneOn ? "FromOneOn" : "OneAlone";
                         });

}  // namespace
