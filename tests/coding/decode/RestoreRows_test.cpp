// Restoring row by row against readWavelet and untransform: the same rows, from streams of any kind.

#include <algorithm>

#include "support/CpuLevels.h"
#include "support/LibraryCodec.h"

namespace {

using namespace qmx;
using test::Bytes;

/// Compares rows with those of a restored image, and wants no more behind one of them.
template <class T>
class ExpectedRows final : public IRowSink<T> {
public:
    explicit ExpectedRows(const CImageData<T>& restored) : expected(restored) {}
    bool take(const CImageData<T>& rows, int slot, int r) override {
        EXPECT_EQ(r, taken) << "rows come in their order";
        for (int p = 0; p < expected.planes; ++p)
            isSame = isSame && std::equal(rows.row(p, slot), rows.row(p, slot) + expected.x,
                                          expected.row(p, r));
        return ++taken != enough;
    }

    int taken = 0;
    int enough = -1;
    bool isSame = true;

private:
    const CImageData<T>& expected;
};

/// The coefficient stream is what follows a header.
template <class T>
void expectSameRows(int width, int height, int planes, const unsigned char* stream,
                    std::size_t streamBytes) {
    CFilter5_3<T> filter;
    CImageData<T> restored(width, height, planes);
    CWaveletDecoder<T> whole(&restored, &filter, false);
    CBitReader reader(stream, streamBytes);
    const int result = whole.readWavelet(reader, 0);

    CImageData<T> none(width, height, planes, std::pmr::new_delete_resource(), {});
    CWaveletDecoder<T> byRows(&none, &filter, false);
    CBitReader again(stream, streamBytes);
    ASSERT_EQ(byRows.readSections(again), result);
    if (!isUsable(result)) return;
    whole.untransform();
    ExpectedRows<T> rows(restored);
    ASSERT_TRUE(byRows.restoreRows(rows));
    ASSERT_EQ(rows.taken, height);
    ASSERT_TRUE(rows.isSame);
}

template <class T>
void expectSameRows(const test::RawImage& image, const Bytes& stream) {
    expectSameRows<T>(image.width, image.height, image.bytesPerPixel == 3 ? 3 : 1,
                      stream.data() + sizeof(TKHeader), stream.size() - sizeof(TKHeader));
}

/// Complete, cut and damaged.
void expectSameRows(test::Content content, int width, int height) {
    SCOPED_TRACE(testing::Message() << nameOf(content) << ' ' << width << " x " << height);
    for (const auto& [bytes, bits] : {std::pair{1, 8}, {3, 8}, {2, 11}, {2, 16}}) {
        const auto image = test::makeImage(content, bytes, bits, width, height);
        Bytes stream = test::encode(image);
        const auto expectSame = [&] {
            return image.bitsPerPixel > 11 ? expectSameRows<int>(image, stream)
                                           : expectSameRows<short>(image, stream);
        };
        expectSame();
        stream[sizeof(TKHeader) + stream.size() / 3 % (stream.size() - sizeof(TKHeader))] ^= 0x10;
        expectSame();
        stream.resize(sizeof(TKHeader) + (stream.size() - sizeof(TKHeader)) / 2);
        expectSame();
    }
}

using RestoreRows = test::AtCpuLevel;

constexpr test::Content kContents[] = {test::Content::flat, test::Content::gradient,
                                       test::Content::noise, test::Content::photo,
                                       test::Content::sparse};

TEST_P(RestoreRows, GivesTheRowsOfThePlanesForSmallSizes) {
    for (int width = 4; width < 40; width += 3)
        for (int height = 4; height < 40; height += 5)
            expectSameRows(kContents[(width + height) % 5], width, height);
}

// Each number of levels with heights around and beyond the rows of its ring.
TEST_P(RestoreRows, GivesTheRowsOfThePlanesForHeightsBeyondTheRing) {
    for (const int width : {5, 9, 18, 37, 70})
        for (const int height : {15, 16, 17, 31, 33, 63, 64, 66, 127, 128, 129, 130, 257, 300})
            expectSameRows(test::Content::photo, width, height);
}

TEST_P(RestoreRows, GivesTheRowsOfThePlanesForWideAndTallImages) {
    // 529 x 1030 is tall and wide, with columns that are not filtered.
    constexpr int kSizes[][2] = {{1030, 70}, {2049, 9}, {529, 1030}};
    for (const auto& [width, height] : kSizes)
        expectSameRows(test::Content::photo, width, height);
}

/// A decoder that has read the sections of a photograph of 128 x 128.
struct ReadyDecoder {
    ReadyDecoder() { EXPECT_EQ(decoder.readSections(reader), kComplete); }

    Bytes stream = test::encode(test::makeImage(test::Content::photo, 1, 8, 128, 128));
    CFilter5_3<short> filter;
    CImageData<short> none{128, 128, 1, std::pmr::new_delete_resource(), {}};
    CWaveletDecoder<short> decoder{&none, &filter, false};
    CBitReader reader{stream.data() + sizeof(TKHeader), stream.size() - sizeof(TKHeader)};
    CImageData<short> any{128, 128, 1};
};

TEST_P(RestoreRows, EndsWhenNoMoreIsWanted) {
    ReadyDecoder ready;
    ready.any.clear();
    ExpectedRows<short> rows(ready.any);
    rows.enough = 17;
    EXPECT_FALSE(ready.decoder.restoreRows(rows));
    EXPECT_EQ(rows.taken, 17);
}

TEST_P(RestoreRows, GivesNoRowsWhenKilled) {
    ReadyDecoder ready;
    ready.decoder.kill();
    ExpectedRows<short> rows(ready.any);
    EXPECT_FALSE(ready.decoder.restoreRows(rows));
    EXPECT_EQ(rows.taken, 0);
}

INSTANTIATE_TEST_SUITE_P(Levels, RestoreRows, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
