#include <gtest/gtest.h>

#include "api/CTeskDecompressor.h"
#include "support/CodecObjects.h"
#include "support/StreamBuilder.h"

// Results of calls in any order, and what they write.

namespace {

using namespace qmx;
using test::Bytes;
using test::Content;
using test::RawImage;

enum class Stream { complete, cut, invalid, headerAlone, noSections, unsupported };

/// Calls: d decompress, l the same with a byte too little, s stop, k kill. The results are those of
/// the decompressions; which of them writes pixels, if any.
struct Life {
    Stream stream;
    const char* calls;
    std::vector<int> results;
    int writer;
};

constexpr int kNobody = -1;

const Life kLives[] = {
    {Stream::complete, "ddd", {0, 0, 0}, 0},
    {Stream::cut, "ddd", {4, 4, 4}, 0},
    {Stream::complete, "ldd", {-1, 0, 0}, kNobody},
    {Stream::cut, "lld", {-1, 4, 4}, kNobody},
    {Stream::complete, "dl", {0, 0}, 0},
    {Stream::complete, "dskd", {0, 0}, 0},
    {Stream::complete, "sdd", {8, 8}, kNobody},
    {Stream::cut, "sdld", {8, 8, 8}, kNobody},
    {Stream::complete, "sdkd", {8, 8}, kNobody},
    {Stream::complete, "kddd", {16, 16, 16}, kNobody},
    {Stream::cut, "kdsd", {16, 16}, kNobody},
    {Stream::complete, "skdld", {16, 16, 16}, kNobody},
    {Stream::noSections, "dd", {0, 0}, 0},
    {Stream::noSections, "kdd", {8, 8}, kNobody},
    {Stream::noSections, "sdd", {8, 8}, kNobody},
    {Stream::invalid, "dd", {128, 128}, kNobody},
    {Stream::invalid, "sdd", {128, 128}, kNobody},
    {Stream::invalid, "ldd", {128, 128, 128}, kNobody},
    {Stream::headerAlone, "skdd", {128, 128}, kNobody},
    {Stream::unsupported, "dskd", {128, 128}, kNobody},
};

class DecompressorLife : public testing::Test {
protected:
    Bytes streamOf(Stream kind) const {
        switch (kind) {
            case Stream::complete:
                return complete;
            case Stream::cut:
                return test::prefixOf(complete, complete.size() / 2);
            case Stream::invalid: {
                // One plane: a section of plane 1.
                const Bytes body = test::StreamBuilder(24, 24, 3).section(1, 0, false, "00").end();
                return test::headed(test::headerOf(image), body);
            }
            case Stream::headerAlone:
                return test::prefixOf(complete, 16);
            case Stream::noSections:
                return test::headed(test::headerOf(image), test::StreamBuilder(24, 24, 7).end());
            case Stream::unsupported:
                return test::headed(makeHeader(4, 8, 24, 24), complete);
        }
        return {};
    }

    RawImage image = test::makeImage(Content::photo, 1, 8, 24, 24);
    Bytes complete = test::encode(image);
};

TEST_F(DecompressorLife, TheFirstResultStandsAndOnlyOneCallWrites) {
    const Bytes untouched(image.bytes.size(), 0xA5);
    for (const Life& life : kLives) {
        SCOPED_TRACE(life.calls + std::string(" on stream ") +
                     std::to_string(static_cast<int>(life.stream)));
        const Bytes stream = streamOf(life.stream);
        CTeskDecompressor decompressor(stream.data(), stream.size());
        std::vector<int> results;
        int writer = kNobody;
        for (const char* call = life.calls; *call != 0; ++call) {
            if (*call == 's') decompressor.stop();
            if (*call == 'k') decompressor.kill();
            if (*call != 'd' && *call != 'l') continue;
            Bytes out = untouched;
            const std::size_t missing = *call == 'l' ? 1 : 0;
            const int result = decompressor.decompress(out.data(), out.size() - missing);
            if (out != untouched) {
                EXPECT_EQ(writer, kNobody) << "written twice";
                writer = static_cast<int>(results.size());
                EXPECT_EQ(out, test::decode(stream).bytes);
            }
            results.push_back(result);
        }
        EXPECT_EQ(results, life.results);
        EXPECT_EQ(writer, life.writer);
    }
}

TEST_F(DecompressorLife, ABufferOfTheExactSizeIsFilledAndNothingBesideIt) {
    for (const test::SampleKind kind : test::kKindsOfBothProfiles)
        for (const std::size_t shift : {1U, 2U, 3U, 8U}) {
            const RawImage photo =
                test::makeImage(Content::noise, kind.bytesPerPixel, kind.bitsPerPixel, 16, 16);
            const Bytes stream = test::encode(photo);
            const std::size_t size = photo.bytes.size();
            for (const bool isCut : {false, true}) {
                const Bytes part = isCut ? test::prefixOf(stream, stream.size() / 2) : stream;
                Bytes out(size + 32, 0xA5);
                CTeskDecompressor decompressor(part.data(), part.size());
                EXPECT_EQ(decompressor.decompress(out.data() + shift, size),
                          isCut ? kCut : kComplete);
                Bytes expected(shift, 0xA5);
                const Bytes pixels = test::decode(part).bytes;
                expected.insert(expected.end(), pixels.begin(), pixels.end());
                expected.resize(out.size(), 0xA5);
                EXPECT_TRUE(test::sameBytes(expected, out));
            }
        }
}

TEST_F(DecompressorLife, EverySizeBelowTheImageIsTooSmall) {
    for (std::size_t size = 0; size < image.bytes.size(); size += 5) {
        Bytes out(image.bytes.size(), 0xA5);
        CTeskDecompressor decompressor(complete.data(), complete.size());
        EXPECT_EQ(decompressor.decompress(out.data(), size), kBufferTooSmall);
        EXPECT_EQ(decompressor.decompress(out.data(), out.size()), kComplete);
        EXPECT_EQ(out, Bytes(image.bytes.size(), 0xA5));
    }
}

TEST_F(DecompressorLife, ImagesWithoutPixelsNeedNoBuffer) {
    for (const auto& [width, height] : {std::pair(0, 0), {0, 7}, {7, 0}}) {
        const Bytes stream = test::encode(test::makeImage(Content::flat, 1, 8, width, height));
        CTeskDecompressor decompressor(stream.data(), stream.size());
        EXPECT_EQ(decompressor.decompress(nullptr, 0), kComplete);
        CTeskDecompressor stopped(stream.data(), stream.size());
        stopped.stop();
        EXPECT_EQ(stopped.decompress(nullptr, 0), height == 0 ? kComplete : kSuspended);
    }
}

TEST_F(DecompressorLife, StreamsMayStandAtAnyAddress) {
    for (std::size_t shift = 0; shift < 8; ++shift) {
        Bytes moved(shift, 0xEE);
        moved.insert(moved.end(), complete.begin(), complete.end());
        CTeskDecompressor decompressor(moved.data() + shift, complete.size());
        Bytes out(image.bytes.size());
        EXPECT_EQ(decompressor.decompress(out.data(), out.size()), kComplete);
        EXPECT_EQ(out, image.bytes);
    }
}

}  // namespace
