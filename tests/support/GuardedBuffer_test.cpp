#include "support/GuardedBuffer.h"

#include <csignal>
#include <gtest/gtest-spi.h>

#include "support/GuardedHeap.h"

namespace {

using test::GuardedBuffer;
using test::GuardedHeap;
using test::Side;

/// Reads and writes one value.
template <class T>
void touch(T* place) {
    volatile T* const there = place;
    const T value = *there;
    *there = value;
}

/// The same in a process that dies of the signal: sanitizers catch it and go another way.
template <class T>
void touchUncaught(T* place) {
    std::signal(SIGSEGV, SIG_DFL);
    touch(place);
}

template <class T>
void expectGuarded(T* first, std::size_t count, Side side) {
    T* const outside = side == Side::atEnd ? first + count : first - 1;
    EXPECT_EXIT(touchUncaught(outside), testing::KilledBySignal(SIGSEGV), "") << nameOf(side);
    touch(first);
    touch(first + count - 1);
}

template <class T>
class GuardedBufferDeathTest : public testing::Test {};
using Elements = testing::Types<unsigned char, short, int, std::uint64_t>;
TYPED_TEST_SUITE(GuardedBufferDeathTest, Elements, );

TYPED_TEST(GuardedBufferDeathTest, OneElementOutsideKillsTheProcess) {
    for (const Side side : test::kBothSides)
        for (const std::size_t count : {1U, 3U, 5000U}) {
            const GuardedBuffer<TypeParam> buffer(std::vector<TypeParam>(count), side);
            expectGuarded(buffer.data(), count, side);
        }
}

TEST(GuardedHeapDeathTest, OneByteOutsideKillsTheProcess) {
    for (const Side side : test::kBothSides) {
        GuardedHeap heap(side);
        auto* const piece = static_cast<unsigned char*>(heap.allocate(37, 1));
        expectGuarded(piece, 37, side);
        heap.deallocate(piece, 37, 1);
    }
}

TEST(GuardedBuffer, HoldsWhatItWasMadeOf) {
    for (const Side side : test::kBothSides)
        for (const std::vector<int>& samples : {std::vector<int>{}, {7}, {1, 2, 3}})
            EXPECT_EQ(GuardedBuffer<int>(samples, side).samples(), samples);
}

TEST(GuardedHeap, PiecesAreAligned) {
    for (const Side side : test::kBothSides) {
        GuardedHeap heap(side);
        void* const piece = heap.allocate(37, 16);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % 16, 0U);
        heap.deallocate(piece, 37, 16);
    }
}

TEST(GuardedHeap, AByteBetweenAPieceAndThePageIsNoticed) {
    GuardedHeap heap(Side::atEnd);
    // Volatile, because a sanitizer knows the size of what allocate returns.
    auto* volatile piece = static_cast<unsigned char*>(heap.allocate(37, 16));
    piece[37] = 0;
    EXPECT_NONFATAL_FAILURE(heap.deallocate(piece, 37, 16), "written behind 37 bytes");
}

}  // namespace
