#pragma once

#include <cstdint>

#include "bitstream/BitBatch.h"
#include "bitstream/ByteBatch.h"
#include "bitstream/CBitEncoder.h"
#include "bitstream/Memory.h"
#include "bitstream/RunCode.h"
#include "coding/syntax/CoefficientGroup.h"

namespace qmx {

/// The n and the u section of one bit plane while they are being coded.
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

    /// Returns: the run after the last newly significant coefficient, when position coefficients of the order
    /// have passed. Unsigned on purpose: a run that was set before the first of them counts below 0.
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
    bool isFull() const { return count + kMostAtOnce > room.get_deleter().count; }

    /// The covered coefficients of the order from `base` to the event, doubled, and 1 for a sign. Null
    /// before the first event: most bit planes of a picture have none.
    std::uint16_t* events = nullptr;
    std::size_t count = 0;
    /// Covered coefficients in front of those that the events count.
    std::uint64_t base = 0;
    MemoryArray<std::uint16_t> room;

private:
    /// Events of a group: each coefficient may be one.
    static constexpr std::size_t kMostAtOnce = kGroupSize;
};

/// All sections of one colour plane and order.
///
/// Plain way: each coefficient that is 0 down to a bit plane, that one included, adds 1 to the run of
/// that plane's coder. Here no section is touched that does not code: all coefficients
/// of the order are counted once (`position`), and each section knows how many of them do not
/// concern it. Only coefficients that are not 0 cost anything.
struct OrderSections {
    /// Takes over from the coders of planeCount bit planes. queueEvents: events that a queue gets room for
    /// when it needs it, 64 to kEvents. Requires: the coders and both storages, one element for each bit
    /// plane, outlive this object; queueMemory outlives the queues; no queue has room yet.
    void begin(PlaneSections* planeStorage, EventQueue* queueStorage, CBitChunkEncoder* runCoders,
               CBitChunkWriter* rawCoders, int planeCount, std::size_t queueEvents,
               std::pmr::memory_resource* queueMemory);
    /// Gives the coders all bits and runs. Requires: the queues are empty. Throws: std::bad_alloc.
    void end(std::uint64_t* newCounts);

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

    PlaneSections* bitPlanes = nullptr;
    EventQueue* queues = nullptr;
    std::uint64_t position = 0;
    int planes = 0;

private:
    [[gnu::cold, gnu::noinline]] void growRuns(int p);
    [[gnu::cold, gnu::noinline]] void growBits(int p);

    CBitChunkEncoder* encoders = nullptr;
    CBitChunkWriter* refinements = nullptr;
    std::size_t eventsOfQueue = 0;
    std::pmr::memory_resource* memory = nullptr;
};

/// Appends the code of any run and a sign. Requires: run < 2^32; room for two appends.
inline void appendEvent(ByteBatch& batch, std::uint64_t run, std::uint64_t sign) {
    static_assert(kRunParameter == 1);
    const auto n = static_cast<std::uint64_t>(bitLength(run | 1) - 1);
    const std::uint64_t coded = run != 0 ? 1 : 0;
    batch.append(std::uint64_t{1} << (n + coded), n + coded + 1);
    batch.append((run & ((std::uint64_t{1} << n) - 1)) | sign << n, n + 1);
}

}  // namespace qmx
