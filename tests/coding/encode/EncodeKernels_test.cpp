#include "coding/encode/EncodeKernels.h"

#include <utility>

#include "coding/encode/COrderEncoder.h"
#include "reference/ReferenceEncoder.h"
#include "reference/ReferenceSections.h"
#include "support/Bytes.h"
#include "support/CpuLevels.h"
#include "support/FoldedData.h"
#include "support/GuardedHeap.h"
#include "support/KernelData.h"
#include "support/LibraryCodec.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::Density;
using test::foldedData;
using test::GuardedBuffer;
using test::GuardedHeap;
using test::Side;

template <class Batch>
Bytes bytesOf(const CBitChunks& chunks, const Batch& batch) {
    Bytes bytes((chunks.total(batch) + 7) / 8);
    CBitWriter out(bytes.data(), bytes.size());
    chunks.writeTo(out, batch);
    out.flush();
    return bytes;
}

template <class T>
std::size_t coveredBy(const std::vector<T>& folded, int p) {
    return static_cast<std::size_t>(std::count_if(
        folded.begin(), folded.end(), [=](T f) { return reference::magnitude(f) >> p <= 1; }));
}

/// Compares all sections of one order with those of the reference.
template <class T>
void expectSections(EncoderStreams<T>& streams, const std::vector<T>& folded) {
    const reference::FoldedValues values(folded.begin(), folded.end());
    for (int p = 0; p < kTableBitPlanes<T>; ++p) {
        const reference::Section n = reference::nSection(values, p);
        const reference::Section u = reference::uSection(values, p);
        OrderSections& order = streams.of(0, 0);
        ASSERT_EQ(order.bitPlanes[p].covered(order.position), coveredBy(folded, p)) << p;
        order.close(p);
        const PlaneSections& sections = order.bitPlanes[p];
        ASSERT_EQ(sections.covered(order.position), coveredBy(folded, p)) << p;
        ASSERT_EQ(sections.significanceBits(), n.payload.size()) << p;
        ASSERT_TRUE(test::sameBytes(n.payload.toBytes(),
                                    bytesOf(sections.significanceChunks, sections.significance)))
            << p;
        ASSERT_EQ(sections.newCount, static_cast<std::uint64_t>(n.count)) << p;
        ASSERT_EQ(sections.refinementBits(), u.payload.size()) << p;
        ASSERT_TRUE(test::sameBytes(u.payload.toBytes(),
                                    bytesOf(sections.refinementChunks, sections.refinement)))
            << p;
    }
}

template <class T>
void encodePart(COrderEncoder<T>& encoder, const T* folded, std::size_t count) {
    std::copy_n(folded, count, encoder.room());
    encoder.encodeRoom(count);
}

/// Encodes in pieces of any size, and starts anew with other encoders after fewer than `longest`.
template <class T>
void encodeInPieces(EncoderStreams<T>& streams, const std::vector<T>& folded, std::uint64_t seed,
                    std::size_t longest = 20000) {
    test::Random random(seed);
    GuardedHeap heap(Side::atEnd);
    for (std::size_t done = 0; done < folded.size();) {
        const auto encoder = makeObject<COrderEncoder<T>>(&heap, streams, 0, 0);
        const std::size_t end = std::min(folded.size(), done + 1 + random.below(longest));
        while (done < end) {
            const std::size_t count =
                std::min<std::size_t>(end - done, random.below(COrderEncoder<T>::kRoom + 1));
            encodePart(*encoder, folded.data() + done, count);
            done += count;
        }
        encoder->finish();
    }
}

using EncodeKernelsAt = test::AtCpuLevel;

template <class T>
void expectReferenceSections(std::size_t count) {
    for (const Density density : test::kDensities) {
        SCOPED_TRACE(nameOf(density));
        const auto folded = foldedData<T>(density, count, count);
        GuardedHeap heap(Side::atEnd);
        auto streams = std::make_unique<EncoderStreams<T>>(1, 0, folded.size(), &heap);
        encodeInPieces(*streams, folded, count);
        expectSections(*streams, folded);
    }
}

TEST_P(EncodeKernelsAt, SectionsAreThoseOfTheReferenceAtEveryLength) {
    for (const std::size_t count : {1U, 2U, 7U, 63U, 64U, 65U, 127U, 128U, 191U, 777U, 5000U}) {
        SCOPED_TRACE(count);
        expectReferenceSections<short>(count);
        expectReferenceSections<int>(count);
    }
}

TEST_P(EncodeKernelsAt, SectionsOfManyChunksAreThoseOfTheReference) {
    expectReferenceSections<short>(600000);
    expectReferenceSections<int>(300000);
}

/// Encodes rows of 0 to kLongestRow coefficients, each filled up to whole groups and no further.
template <class T>
void expectSectionsOfRows(Density density, Side side) {
    constexpr auto kPlanes = std::size_t{kTableBitPlanes<T>};
    GuardedHeap heap(side);
    EncoderStreams<T> streams(1, 0, test::kLongestRow, &heap);
    OrderSections& order = streams.of(0, 0);
    const GuardedBuffer<PlaneSections> pairs(
        std::vector<PlaneSections>(order.bitPlanes, order.bitPlanes + kPlanes), side);
    PlaneSections* const storage = std::exchange(order.bitPlanes, pairs.data());
    std::vector<EventQueue> queues(kPlanes);
    order.queues = queues.data();
    const auto& kernels = kernelsAt<EncodeKernels<T>>(activeCpuLevel());
    std::vector<T> all;
    for (std::size_t count = 0; count <= test::kLongestRow; ++count) {
        auto row = foldedData<T>(density, count, count);
        all.insert(all.end(), row.begin(), row.end());
        row.resize((count + kGroupSize - 1) / kGroupSize * kGroupSize);
        kernels.encode(order, GuardedBuffer<T>(row, side).data(), count);
    }
    kernels.finish(order);
    expectSections(streams, all);
    order.bitPlanes = storage;
}

TEST_P(EncodeKernelsAt, RowsOfAllLengthsBetweenGuardPagesAreEncoded) {
    for (const Density density : test::kDensities)
        for (const Side side : test::kBothSides) {
            SCOPED_TRACE(testing::Message() << nameOf(density) << ", " << nameOf(side));
            expectSectionsOfRows<short>(density, side);
            expectSectionsOfRows<int>(density, side);
        }
}

TEST_P(EncodeKernelsAt, OneCoefficientAfterTheOtherGivesTheSameSections) {
    const auto folded = foldedData<short>(Density::dense, 3000, 4);
    auto streams = std::make_unique<EncoderStreams<short>>(1, 0, folded.size(),
                                                           std::pmr::new_delete_resource());
    COrderEncoder<short> encoder(*streams, 0, 0);
    for (const short value : folded)
        encoder.encode(value < 0 ? 0 : static_cast<std::uint64_t>(value));
    encoder.finish();
    expectSections(*streams, folded);
}

TEST_P(EncodeKernelsAt, RunsOfAllLengthsAreCoded) {
    std::vector<int> folded;
    for (std::size_t run = 0; run < 1200; ++run) {
        folded.resize(folded.size() + run, 0);
        folded.push_back(run % 3 == 0 ? 3 : 2);
    }
    auto streams =
        std::make_unique<EncoderStreams<int>>(1, 0, folded.size(), std::pmr::new_delete_resource());
    encodeInPieces(*streams, folded, 9);
    expectSections(*streams, folded);
}

template <class T>
void expectRuns(const std::vector<std::size_t>& runs, std::size_t times) {
    std::vector<T> folded;
    for (const std::size_t run : runs)
        for (std::size_t i = 0; i < times; ++i) {
            folded.resize(folded.size() + run, 0);
            folded.push_back(i % 3 == 0 ? T{3} : T{2});
        }
    auto streams =
        std::make_unique<EncoderStreams<T>>(1, 0, folded.size(), std::pmr::new_delete_resource());
    encodeInPieces(*streams, folded, times, 100'000'000);
    expectSections(*streams, folded);
}

// Many codes of one length side by side: 32 events together may take more than four words.
TEST_P(EncodeKernelsAt, EqualRunsInALongRowAreCoded) {
    for (std::size_t run = 0; run < 70; ++run)
        expectRuns<short>({run}, 1000);
    for (const std::size_t run : {127U, 128U, 255U, 256U, 511U, 1023U, 1024U})
        expectRuns<short>({run}, 300);
}

// Events that wait together count coefficients in 14 bits, in lanes of 16.
TEST_P(EncodeKernelsAt, RunsBeyond13And16BitsAreCoded) {
    expectRuns<short>({5, 16256, 7, 16319, 1, 16320, 0, 16321, 3}, 2);
    for (std::size_t run = 16256; run < 16456; run += 9)
        expectRuns<short>({run, 3}, 1);
    // Neighbours with the longest codes, at every place in a byte and a vector.
    for (std::size_t before = 0; before < 16; ++before)
        for (const auto& longest : std::vector<std::vector<std::size_t>>{
                 {8192, 8000}, {8000, 8192}, {8100, 8100}, {8192, 8192, 8192}}) {
            std::vector<std::size_t> runs(before, 1);
            runs.insert(runs.end(), longest.begin(), longest.end());
            expectRuns<short>(runs, 1);
        }
    expectRuns<short>({5, 32640, 7, 32703, 1, 32704, 0, 32705, 3}, 2);
    for (std::size_t run = 32640; run < 32840; run += 9)
        expectRuns<short>({run, 3}, 1);
    expectRuns<short>({32766, 32767, 32768, 32769, 65535, 65536, 65537, 200000, 0, 1}, 1);
    expectRuns<int>({0, 70000, 16383, 16384, 16385, 8191, 8192}, 5);
}

TEST_P(EncodeKernelsAt, StreamsOfAnySizeAreThoseOfTheReference) {
    constexpr int kSizes[][2] = {{2, 2},   {4, 4},   {65, 33},   {64, 64},  {130, 67},
                                 {511, 9}, {513, 8}, {1030, 40}, {9, 1030}, {200, 150}};
    for (const auto& [width, height] : kSizes)
        for (const auto& [bytes, bits] : {std::pair{1, 8}, {3, 8}, {2, 11}, {2, 16}}) {
            const auto image = test::makeImage(test::Content::photo, bytes, bits, width, height);
            const Bytes expected = reference::encode({bytes, bits, width, height, image.bytes});
            ASSERT_TRUE(test::sameBytes(expected, test::encode(image))) << width << " x " << height;
        }
}

INSTANTIATE_TEST_SUITE_P(Levels, EncodeKernelsAt, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
