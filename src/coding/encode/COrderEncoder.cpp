#include "coding/encode/COrderEncoder.h"

#include <algorithm>

namespace qmx {

template <class T>
COrderEncoder<T>::COrderEncoder(EncoderStreams<T>& streams, int plane, int order)
    : kernels(&activeKernels<EncodeKernels<T>>()), sections(streams.of(plane, order)) {
    sections.queues = queues;
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
}

template class COrderEncoder<short>;
template class COrderEncoder<int>;

}  // namespace qmx
