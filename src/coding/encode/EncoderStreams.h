#pragma once

#include <cstdint>

#include "coding/encode/OrderSections.h"
#include "coding/syntax/CSectionTable.h"

namespace qmx {

/// All sections of an encoder.
template <class T>
struct EncoderStreams {
    /// For an image of so many colour planes and levels; how many samples a plane has decides what the sections
    /// take in advance. Requires: memory outlives the streams. Throws: std::bad_alloc.
    EncoderStreams(int planes, int levels, std::uint64_t samples, std::pmr::memory_resource* memory)
        : samplesPerPlane(samples),
          storage(makeArray<PlaneSections>(
              TableSize::of(planes, levels, kTableBitPlanes<T>).elements(), memory)),
          chunkMemory(memory),
          queueMemory(memory) {
        PlaneSections* next = storage.get();
        for (int plane = 0; plane < planes; ++plane)
            for (int order = 0; order <= levels; ++order, next += kTableBitPlanes<T>)
                begin(plane, order, next);
    }

    /// Requires: the image has both.
    OrderSections& of(int plane, int order) { return sections[plane][order]; }
    /// Empties the sections of one plane and order.
    void restart(int plane, int order) { begin(plane, order, of(plane, order).bitPlanes); }
    /// Releases the queues. Requires: nobody encodes.
    void releaseQueues() { queueMemory.release(); }

private:
    void begin(int plane, int order, PlaneSections* planes) {
        // About as many coefficients as the order has, or more.
        of(plane, order)
            .begin(planes, kTableBitPlanes<T>, samplesPerPlane >> (2 * order), chunkMemory,
                   queueMemory);
    }

    std::uint64_t samplesPerPlane;
    OrderSections sections[kTablePlanes][kMaxOrders];
    MemoryArray<PlaneSections> storage;
    CMemoryPool chunkMemory;
    CMemoryPool queueMemory;
};

}  // namespace qmx
