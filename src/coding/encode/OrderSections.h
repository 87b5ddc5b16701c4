#pragma once

#include <cstdint>

#include "bitstream/BitBatch.h"
#include "bitstream/ByteBatch.h"
#include "bitstream/CBitChunks.h"
#include "bitstream/RunCode.h"
#include "coding/syntax/CoefficientGroup.h"

namespace qmx {

/// The n and the u section of one bit plane.
struct PlaneSections {
    /// The significance pass: run codes and signs.
    ByteBatch significance;
    /// The refinement pass: raw bits.
    BitBatch refinement;
    /// Coefficients of the order so far that the n section does not cover.
    std::uint64_t excluded;
    /// Covered coefficients up to and with the last newly significant one.
    std::uint64_t coded;
    /// Coefficients that are newly significant in the bit plane.
    std::uint64_t newCount;
    CBitChunks significanceChunks;
    CBitChunks refinementChunks;

    std::uint64_t significanceBits() const { return significanceChunks.total(significance); }
    std::uint64_t refinementBits() const { return refinementChunks.total(refinement); }
    /// Returns: the coefficients that the n section covers, when position coefficients of the order have passed.
    std::uint64_t covered(std::uint64_t position) const { return position - excluded; }
    /// Returns: the run after the last newly significant coefficient.
    std::uint64_t run(std::uint64_t position) const { return position - excluded - coded; }
};

/// Events of one n section that wait to be coded together, from one group of coefficients to the
/// next. Only some kernels keep events back.
struct EventQueue {
    /// Events that a queue has room for at most; queues of small orders have less.
    static constexpr std::size_t kEvents = 512;
    /// Bits of a count of covered coefficients from `base`. With 14, the codes of two neighbouring events
    /// always fit one append: a run and its sign take 2 n + 3 bits, where 2^n is the highest bit of the
    /// run, and two runs that add up to less than 2^14 have n = 13 and 12 at most.
    static constexpr int kSpanBits = 14;
    static_assert(2 * ((kSpanBits - 1) + (kSpanBits - 2)) + 2 * 3 <= ByteBatch::kMaxBits);

    /// Returns: whether a group may have more events than there is room for, as without any room.
    bool isFull() const { return count + kMostAtOnce > room; }

    /// The covered coefficients of the order from `base` to the event, doubled, and 1 for a sign. Null
    /// before the first event: most bit planes of a picture have none.
    std::uint16_t* events = nullptr;
    std::size_t count = 0;
    /// Covered coefficients in front of those that the events count.
    std::uint64_t base = 0;
    std::size_t room = 0;

private:
    /// Events of a group: each coefficient may be one.
    static constexpr std::size_t kMostAtOnce = kGroupSize;
};

/// All sections of one colour plane and order, from its first coefficient on.
///
/// Plain way: each coefficient that is 0 down to a bit plane, that one included, adds 1 to the run of
/// that plane's coder. Here no section is touched that does not code: all coefficients
/// of the order are counted once (`position`), and each section knows how many of them do not
/// concern it. Only coefficients that are not 0 cost anything.
struct OrderSections {
    /// Makes empty sections for about so many coefficients, or less. Requires: storage, one element for each
    /// bit plane, and the pools outlive the sections.
    void begin(PlaneSections* storage, int planeCount, std::uint64_t coefficients,
               CMemoryPool& memoryOfChunks, CMemoryPool& memoryOfQueues);

    /// Encodes one coefficient whose magnitude is not 0, the plain way. Does not count it.
    /// Throws: std::bad_alloc.
    void encode(std::uint64_t folded);

    // To be called before each batch of appends, of at least one bit.
    void makeRoomForRuns(int p) {
        if (bitPlanes[p].significance.isFull()) growRuns(p);
    }
    void makeRoomForBits(int p) {
        if (bitPlanes[p].refinement.isFull()) growBits(p);
    }

    /// Gives a queue its room. Requires: it has none. Throws: std::bad_alloc.
    [[gnu::cold, gnu::noinline]] void makeQueue(int p);

    // When all coefficients have passed and all queues are empty.

    bool isClosed(int p) const { return (closedPlanes >> p & 1) != 0; }
    /// Closes a section that is not closed; nothing follows its last event.
    void leaveOpen(int p) { closedPlanes |= 1U << p; }
    /// Closes a section that is not closed, with its last run, if it has events at all.
    /// Throws: std::bad_alloc.
    void close(int p);
    /// Spells out the run of a closed section without events. Throws: std::bad_alloc.
    void appendWholeRun(int p) { appendRun(p, bitPlanes[p].covered(position)); }

    PlaneSections* bitPlanes = nullptr;
    /// One for each bit plane; belong to who encodes.
    EventQueue* queues = nullptr;
    std::uint64_t position = 0;
    int planes = 0;

private:
    [[gnu::cold, gnu::noinline]] void growRuns(int p);
    [[gnu::cold, gnu::noinline]] void growBits(int p);
    void appendRun(int p, std::uint64_t run);

    std::uint32_t closedPlanes = 0;
    int firstWords = 0;
    std::size_t eventsOfQueue = 0;
    CMemoryPool* chunkMemory = nullptr;
    CMemoryPool* queueMemory = nullptr;
};

/// Appends the code of any run and, behind it, bits that follow it. Requires: run < 2^32; room for two appends.
inline void appendRunCode(ByteBatch& batch, std::uint64_t run, std::uint64_t behind,
                          std::uint64_t bitsBehind) {
    static_assert(kRunParameter == 1);
    const auto n = static_cast<std::uint64_t>(bitLength(run | 1) - 1);
    const std::uint64_t coded = run != 0 ? 1 : 0;
    batch.append(std::uint64_t{1} << (n + coded), n + coded + 1);
    batch.append((run & ((std::uint64_t{1} << n) - 1)) | behind << n, n + bitsBehind);
}

/// The same for a run and a sign.
inline void appendEvent(ByteBatch& batch, std::uint64_t run, std::uint64_t sign) {
    appendRunCode(batch, run, sign, 1);
}

}  // namespace qmx
