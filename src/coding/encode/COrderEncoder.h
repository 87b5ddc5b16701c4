#pragma once

#include <cstddef>
#include <cstdint>

#include "coding/encode/EncodeKernels.h"
#include "coding/encode/EncoderStreams.h"

namespace qmx {

/// Spreads the folded coefficients of one colour plane and order over the sections of their bit
/// planes. Format: docs/format.md, 10 Sections.
///
/// Coefficients wait in a queue until there are enough for whole groups: before finish, sections lack some.
template <class T>
class COrderEncoder {
public:
    /// Goes on behind what the sections have. Requires: streams has plane and order, and outlives this object.
    COrderEncoder(EncoderStreams<T>& streams, int plane, int order);
    COrderEncoder(const COrderEncoder&) = delete;
    COrderEncoder& operator=(const COrderEncoder&) = delete;

    /// Coefficients that room has room for.
    static constexpr std::size_t kRoom = 512;

    /// Returns: where the next coefficients, at most kRoom, are to be put before encodeRoom.
    T* room() { return queue + queued; }
    /// Encodes count folded values that stand in room. Throws: std::bad_alloc.
    void encodeRoom(std::size_t count);

    /// Encodes one coefficient of any width up to the bit planes that the tables have.
    /// Requires: encodeRoom is not used. Throws: std::bad_alloc.
    void encode(std::uint64_t folded) {
        if (folded >= 2) sections.encode(folded);
        ++sections.position;
    }

    /// Gives the sections all bits. Requires: nothing is encoded after it. Throws: std::bad_alloc.
    void finish();

private:
    const EncodeKernels<T>* kernels;
    OrderSections& sections;
    EventQueue queues[kTableBitPlanes<T>];
    std::size_t queued = 0;
    T queue[kRoom + kGroupSize];
};

extern template class COrderEncoder<short>;
extern template class COrderEncoder<int>;

}  // namespace qmx
