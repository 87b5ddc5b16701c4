// Stops of calls of the C interface at every moment that a test can choose: whenever memory is allocated,
// and whenever a row of pixels or a page of the stream is touched for the first time in a while.

#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/CountingHeap.h"
#include "support/EveryDecoder.h"
#include "support/TouchedPieces.h"

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::CountingHeap;
using test::RawImage;
using test::sameBytes;
using test::TouchedPieces;

/// How many rows a call may touch after the one that stopped it.
constexpr std::size_t kMostRowsAfterStop = 1;
/// Every allocation but with sanitizers, which are slow.
constexpr std::size_t kAllocationStep = test::kRunsInFull ? 1 : 7;
/// Whether a codec that was stopped still works is tried after one of so many stops.
constexpr std::size_t kRecoveryShare = 64;

struct Kind {
    int bytesPerPixel;
    int bitsPerPixel;
};
constexpr Kind kKinds[] = {{1, 8}, {3, 8}, {2, 11}, {2, 12}, {2, 16}};

/// A way to call the codec.
struct Mode {
    const char* name;
    std::uint32_t flags;
    std::size_t budgetBytes;
};
constexpr Mode kModes[] = {
    {"Compared", 0, 0},
    {"Unverified", TESK_UNVERIFIED, 0},
    {"Plain", TESK_PLAIN, 0},
    {"Budget", 0, 5000},
};

/// A codec on a heap that counts, and one call of it after the other.
class StoppedCalls {
public:
    explicit StoppedCalls(std::uint32_t flags = 0) {
        tesk_options options = heap.options();
        options.flags = flags;
        codec = test::makeCodec(&options);
        heap.stopped = codec.get();
    }

    /// Stops work, which is a call without a stop first, at each of its allocations.
    template <class Work>
    void atEveryAllocation(Work work) {
        heap.restart();
        const Call whole = work();
        ASSERT_TRUE(whole.isUsable());
        const std::size_t calls = heap.calls;
        // The last one always: nothing may look like a result after it.
        for (std::size_t n = (calls - 1) % kAllocationStep; n < calls; n += kAllocationStep) {
            heap.restart();
            heap.stopAt = n;
            const Call call = work();
            heap.stopAt = CountingHeap::kNever;
            SCOPED_TRACE(testing::Message() << "allocation " << n << " of " << calls);
            expectStopped(call, whole, false);
            recover(work, whole, n);
        }
    }

    /// The same at touches of pieces, mostStops of them at most. mayComplete: whether the last one may be
    /// too late. Returns: how often pieces were touched
    /// after the stop, at most.
    template <class Work>
    std::size_t atTouches(TouchedPieces& pieces, Work work, std::size_t mostStops,
                          bool mayComplete) {
        pieces.stopped = codec.get();
        const Call whole = work();
        EXPECT_TRUE(whole.isUsable());
        const std::size_t touches = pieces.touches;
        EXPECT_GT(touches, 0U);
        const std::size_t step = (touches + mostStops - 1) / mostStops;
        std::size_t most = 0;
        // The last one always, because only there the call may complete.
        for (std::size_t n = (touches - 1) % step; n < touches; n += step) {
            pieces.stopAt = n;
            const Call call = work();
            pieces.stopAt = TouchedPieces::kNever;
            SCOPED_TRACE(testing::Message() << "touch " << n << " of " << touches);
            expectStopped(call, whole, mayComplete && n + 1 == touches);
            most = std::max(most, pieces.touchesSinceStop);
            recover(work, whole, n);
        }
        return most;
    }

    CountingHeap heap;
    test::Codec codec;

private:
    void expectStopped(const Call& call, const Call& whole, bool mayComplete) {
        EXPECT_EQ(heap.live.size(), 1U) << "the codec alone";
        if (mayComplete && call.status == whole.status) {
            EXPECT_TRUE(sameBytes(whole.bytes, call.bytes));
            EXPECT_EQ(call.result.stream_bytes, whole.result.stream_bytes);
            return;
        }
        EXPECT_EQ(call.status, TESK_STOPPED);
        EXPECT_EQ(call.result.stream_bytes, 0U);
        EXPECT_EQ(call.result.loss, TESK_LOSS_NONE);
        EXPECT_EQ(call.result.rescue, 0U);
    }

    template <class Work>
    void recover(Work work, const Call& whole, std::size_t n) {
        const bool isTried = n % kRecoveryShare == 0;
        EXPECT_TRUE(!isTried || work().status == TESK_STOPPED) << "until it is cleared";
        tesk_clear_stop(codec.get());
        if (!isTried) return;
        const Call again = work();
        EXPECT_EQ(again.status, whole.status);
        EXPECT_TRUE(sameBytes(whole.bytes, again.bytes));
    }
};

/// The rows of an image in pieces of their own.
class TouchedRows {
public:
    explicit TouchedRows(const RawImage& rawImage)
        : image(rawImage), pieces(rowBytesOf(image), static_cast<std::size_t>(image.height)) {
        const Bytes rows = test::spread(image, pieces.pieceBytes(), 0);
        std::copy(rows.begin(), rows.end(), pieces.begin());
    }

    Call compress(tesk_codec* codec, std::size_t budgetBytes) {
        const tesk_image geometry = geometryOf(image);
        void* block = nullptr;
        Call call;
        {
            const TouchedPieces::Watch watch(pieces);
            call.status =
                tesk_compress_to_block(codec, &geometry, pieces.begin(), pieces.pieceBytes(),
                                       budgetBytes, &block, &call.result);
        }
        EXPECT_EQ(block != nullptr, call.isUsable());
        const auto* bytes = static_cast<const unsigned char*>(block);
        if (block != nullptr) call.bytes.assign(bytes, bytes + call.result.stream_bytes);
        tesk_release_block(codec, block);
        return call;
    }

    /// image: the picture at 1 : 2^levels.
    Call decompress(tesk_codec* codec, const Bytes& stream, std::uint32_t levels = 0) {
        const std::size_t rowBytes = rowBytesOf(image);
        const auto rows = static_cast<std::size_t>(image.height);
        std::fill_n(pieces.begin(), rows * pieces.pieceBytes(), kUnwritten);
        Call call;
        {
            const TouchedPieces::Watch watch(pieces);
            call.status = tesk_decompress_reduced(codec, stream.data(), stream.size(), levels,
                                                  pieces.begin(), rows * pieces.pieceBytes(),
                                                  pieces.pieceBytes(), &call.result);
        }
        if (!call.isUsable()) return call;
        for (std::size_t r = 0; r < rows; ++r) {
            const unsigned char* row = pieces.begin() + r * pieces.pieceBytes();
            call.bytes.insert(call.bytes.end(), row, row + rowBytes);
        }
        return call;
    }

    const RawImage& image;
    TouchedPieces pieces;

private:
    static constexpr unsigned char kUnwritten = 0xA5;
};

/// A stream in pages of their own.
class TouchedStream {
public:
    /// The smallest pages there are.
    static constexpr std::size_t kPageBytes = 4096;

    explicit TouchedStream(const Bytes& streamBytes, std::size_t mostOpenPages = kMostOpenPages)
        : sizeBytes(streamBytes.size()), pieces(1, sizeBytes / kPageBytes + 1, mostOpenPages) {
        std::copy(streamBytes.begin(), streamBytes.end(), pieces.begin());
    }

    Call decompress(tesk_codec* codec, const RawImage& image) {
        Call call;
        call.bytes.resize(image.bytes.size());
        {
            const TouchedPieces::Watch watch(pieces);
            call.status = tesk_decompress(codec, pieces.begin(), sizeBytes, call.bytes.data(),
                                          call.bytes.size(), 0, &call.result);
        }
        if (!call.isUsable()) call.bytes.clear();
        return call;
    }

    std::size_t sizeBytes;
    TouchedPieces pieces;

private:
    /// A few less than there are sections in work, so that touches go on to the end.
    static constexpr std::size_t kMostOpenPages = 8;
};

struct Case {
    Kind kind;
    int width;
    int height;

    RawImage image(Content content = Content::photo) const {
        return test::makeImage(content, kind.bytesPerPixel, kind.bitsPerPixel, width, height);
    }
    /// Every row, both times that it is read, once for each width of coefficients. Sanitizers are slow.
    std::size_t mostStops() const {
        const bool isThorough =
            (kind.bitsPerPixel == 8 && kind.bytesPerPixel == 1) || kind.bitsPerPixel == 16;
        return test::kRunsInFull && isThorough && width <= 256 ? 1000 : 25;
    }
};

class Stops : public testing::TestWithParam<Case> {
protected:
    RawImage image = GetParam().image();
    /// Complete and cut.
    Bytes streams[2] = {test::compressCall(test::makeCodec().get(), image).bytes,
                        test::prefixOf(streams[0], streams[0].size() / 2)};
};

TEST_P(Stops, ACompressionEndsAtEveryRowThatItReads) {
    for (const Mode& mode : kModes) {
        SCOPED_TRACE(mode.name);
        StoppedCalls calls(mode.flags);
        TouchedRows rows(image);
        const auto work = [&] { return rows.compress(calls.codec.get(), mode.budgetBytes); };
        const std::size_t more = calls.atTouches(rows.pieces, work, GetParam().mostStops(), false);
        EXPECT_LE(more, kMostRowsAfterStop);
    }
}

TEST_P(Stops, ACompressionEndsAtEveryAllocation) {
    for (const Mode& mode : kModes) {
        SCOPED_TRACE(mode.name);
        StoppedCalls calls(mode.flags);
        calls.atEveryAllocation(
            [&] { return test::compressCall(calls.codec.get(), image, mode.budgetBytes); });
    }
}

/// A section that is written when the stop comes is written to its end.
TEST_P(Stops, ACompressionEndsAtEveryPageOfTheStreamThatItWrites) {
    constexpr std::size_t kPageBytes = 4096;
    // The longest sections are those of one bit of every sample of the finest order, 3 of 4, with room to spare.
    const std::size_t samples = image.bytes.size() / (GetParam().kind.bytesPerPixel == 2 ? 2 : 1);
    const std::size_t mostPages = 2 + samples / 8 / kPageBytes;
    StoppedCalls calls(TESK_UNVERIFIED);
    TouchedPieces pages(kPageBytes, streams[0].size() / kPageBytes + 1);
    const auto work = [&] {
        const tesk_image geometry = geometryOf(image);
        Call call;
        {
            const TouchedPieces::Watch watch(pages);
            call.status = tesk_compress(calls.codec.get(), &geometry, image.bytes.data(), 0, 0,
                                        pages.begin(), streams[0].size(), &call.result);
        }
        if (call.isUsable()) call.bytes.assign(pages.begin(), pages.begin() + streams[0].size());
        return call;
    };
    EXPECT_LE(calls.atTouches(pages, work, GetParam().mostStops(), false), mostPages);
}

TEST_P(Stops, ADecompressionEndsAtEveryRowThatItWrites) {
    StoppedCalls calls;
    TouchedRows rows(image);
    for (const Bytes& bytes : streams) {
        const auto work = [&] { return rows.decompress(calls.codec.get(), bytes); };
        const std::size_t more = calls.atTouches(rows.pieces, work, GetParam().mostStops(), true);
        EXPECT_EQ(rows.pieces.touches, static_cast<std::size_t>(image.height))
            << "in order, once each";
        EXPECT_LE(more, kMostRowsAfterStop);
    }
}

TEST_P(Stops, AReductionEndsAtEveryRowThatItWrites) {
    StoppedCalls calls;
    for (const int levels : {1, 3}) {
        const int last = (1 << levels) - 1;
        const auto k = static_cast<std::uint32_t>(levels);
        const RawImage picture{image.bytesPerPixel, image.bitsPerPixel,
                               (image.width + last) >> levels, (image.height + last) >> levels,
                               test::reduceCall(calls.codec.get(), streams[0], k).bytes};
        TouchedRows rows(picture);
        const auto work = [&] { return rows.decompress(calls.codec.get(), streams[0], k); };
        const std::size_t more = calls.atTouches(rows.pieces, work, GetParam().mostStops(), true);
        EXPECT_EQ(rows.pieces.touches, static_cast<std::size_t>(picture.height));
        EXPECT_LE(more, kMostRowsAfterStop);
    }
}

TEST_P(Stops, ADecompressionEndsAtEveryAllocation) {
    StoppedCalls calls;
    for (const Bytes& bytes : streams)
        for (const std::uint32_t levels : {0U, 2U})
            calls.atEveryAllocation(
                [&] { return test::reduceCall(calls.codec.get(), bytes, levels); });
}

/// Sections are read as far as rows need them, so that these stops fall all over the work.
TEST_P(Stops, ADecompressionEndsAtEveryPageOfTheStreamThatItReads) {
    constexpr std::size_t kMostPageStops = test::kRunsInFull ? 20 : 5;
    StoppedCalls calls;
    for (const Bytes& bytes : streams) {
        TouchedStream touched(bytes);
        calls.atTouches(
            touched.pieces, [&] { return touched.decompress(calls.codec.get(), image); },
            kMostPageStops, false);
    }
}

/// Before the first row is there, many are decoded.
TEST(StopsOfWideImages, EndTheRowsThatAreDecodedAhead) {
    const RawImage image = test::makeImage(Content::noise, 1, 8, 9000, 256);
    const Bytes bytes = test::compressCall(test::makeCodec().get(), image).bytes;
    const std::size_t allPages = bytes.size() / TouchedStream::kPageBytes + 1;
    TouchedStream touched(bytes, allPages);
    StoppedCalls calls;
    const std::size_t more = calls.atTouches(
        touched.pieces, [&] { return touched.decompress(calls.codec.get(), image); }, 8, false);
    std::printf("%zu of %zu\n", more, allPages);
    EXPECT_LE(more, allPages / 16);
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (const Kind kind : kKinds)
        for (const auto& [width, height] : {std::pair(24, 24), {256, 257}, {300, 260}})
            cases.push_back({kind, width, height});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Images, Stops, testing::ValuesIn(allCases()), [](const auto& instance) {
    const Case& image = instance.param;
    return std::to_string(image.kind.bytesPerPixel) + "Bytes" +
           std::to_string(image.kind.bitsPerPixel) + "Bits" + std::to_string(image.width) + "x" +
           std::to_string(image.height);
});

/// Images of one value, which need a rescue: their sections are too long.
class StopsOfRescues : public testing::TestWithParam<Kind> {
protected:
    RawImage image =
        test::makeImage(Content::flat, GetParam().bytesPerPixel, GetParam().bitsPerPixel, 362, 360);
    /// Without the comparison, which would cover up for what comes out of a rescue that was stopped.
    StoppedCalls calls{TESK_UNVERIFIED};
};

TEST_P(StopsOfRescues, EndThemAtEveryAllocation) {
    EXPECT_NE(test::compressCall(calls.codec.get(), image).result.rescue, 0U);
    calls.atEveryAllocation([&] { return test::compressCall(calls.codec.get(), image); });
}

TEST_P(StopsOfRescues, EndThemAtEveryRowThatTheyRead) {
    constexpr std::size_t kMostStops = test::kRunsInFull ? 100 : 10;
    TouchedRows rows(image);
    const std::size_t more = calls.atTouches(
        rows.pieces, [&] { return rows.compress(calls.codec.get(), 0); }, kMostStops, false);
    EXPECT_LE(more, kMostRowsAfterStop);
    EXPECT_GE(rows.pieces.touches, static_cast<std::size_t>(image.height));
}

INSTANTIATE_TEST_SUITE_P(Kinds, StopsOfRescues, testing::ValuesIn(kKinds),
                         [](const auto& instance) {
                             return std::to_string(instance.param.bytesPerPixel) + "Bytes" +
                                    std::to_string(instance.param.bitsPerPixel) + "Bits";
                         });

}  // namespace
