#include "coding/encode/COrderEncoder.h"

#include <algorithm>

namespace qmx {
namespace {

/// Returns: room for all events of a small order, in whole groups and a group to spare.
std::size_t queueEvents(std::uint64_t coefficients) {
    const std::uint64_t groups = coefficients / kGroupSize + 2;
    return static_cast<std::size_t>(
        std::min<std::uint64_t>(groups * kGroupSize, EventQueue::kEvents));
}

}  // namespace

template <class T>
COrderEncoder<T>::COrderEncoder(EncoderStreams<T>& streams, int plane, int order)
    : kernels(&activeKernels<EncodeKernels<T>>()),
      newCounts(streams.newCounts.bitPlanes(plane, order)) {
    sections.begin(planes, queues, streams.encoders.bitPlanes(plane, order),
                   streams.refinements.bitPlanes(plane, order), kTableBitPlanes<T>,
                   queueEvents(streams.coefficients(order)), streams.memory);
}

template <class T>
void COrderEncoder<T>::encodeRoom(std::size_t count) {
    queued += count;
    const std::size_t whole = queued / kGroupSize * kGroupSize;
    kernels->encode(sections, queue, whole);
    std::copy_n(queue + whole, queued - whole, queue);
    queued -= whole;
}

template <class T>
void COrderEncoder<T>::finish() {
    std::fill(queue + queued, queue + kGroupSize, T{0});
    kernels->encode(sections, queue, queued);
    queued = 0;
    kernels->finish(sections);
    sections.end(newCounts);
}

template class COrderEncoder<short>;
template class COrderEncoder<int>;

}  // namespace qmx
