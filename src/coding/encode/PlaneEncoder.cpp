#include "coding/encode/PlaneEncoder.h"

#include <algorithm>

#include "coding/syntax/ScanOrder.h"

namespace qmx {

template <class T>
PlaneEncoder<T>::PlaneEncoder(EncoderStreams<T>& streams, int plane, int levelCount, int topPlane)
    : kernels(&foldKernels<T>(activeCpuLevel())), levels(levelCount) {
    const int bitPlanes = std::min(topPlane + 1, kTableBitPlanes<T>);
    for (int o = 0; o <= levels; ++o)
        orders[o].emplace(streams, plane, o, bitPlanes);
}

template <class T>
void PlaneEncoder<T>::encodeRow(const T* row, int index, int width) {
    const int level = rowLevel(index, levels);
    if (level < 0) return;
    const auto columns = static_cast<std::size_t>(width);
    if (level == 0) return orders[0]->encodeRow(row, columns);
    for (std::size_t c = 0; c < columns; c += kBlockColumns)
        encodeBlock(row + c, std::min(kBlockColumns, columns - c), level);
}

template <class T>
void PlaneEncoder<T>::encodeBlock(const T* block, std::size_t columns, int level) {
    // Plain way: one pass for each order, with its first column and step. Here each order takes the
    // odd columns of what the order before it has left, which are neighbours.
    T even[kBlockColumns / 2 + 1];
    for (int o = 0; o < level; ++o) {
        const std::size_t pairs = columns / 2;
        kernels->split(block, pairs, even, orders[o]->room());
        orders[o]->encodeRoom(pairs);
        if (columns % 2 != 0) even[pairs] = block[columns - 1];
        columns -= pairs;
        block = even;
    }
    std::copy_n(block, columns, orders[level]->room());
    orders[level]->encodeRoom(columns);
}

template <class T>
void PlaneEncoder<T>::encodeLine(int order, const T* line, std::size_t count) {
    OrderEncoder<T>& encoder = *orders[order];
    for (std::size_t c = 0; c < count; c += kBlockColumns) {
        const std::size_t columns = std::min(kBlockColumns, count - c);
        kernels->fold(line + c, columns, encoder.room(), found);
        encoder.encodeRoom(columns);
    }
}

template <class T>
void PlaneEncoder<T>::encodeOdds(int order, const T* line, std::size_t count, T* evens) {
    OrderEncoder<T>& encoder = *orders[order];
    for (std::size_t c = 0; c < count / 2; c += kBlockColumns) {
        const std::size_t pairs = std::min(kBlockColumns, count / 2 - c);
        T odds[kBlockColumns];
        kernels->split(line + 2 * c, pairs, evens + c, odds);
        kernels->fold(odds, pairs, encoder.room(), found);
        encoder.encodeRoom(pairs);
    }
    if (count % 2 != 0) evens[count / 2] = line[count - 1];
}

template <class T>
void PlaneEncoder<T>::finish() {
    for (int o = 0; o <= levels; ++o)
        orders[o]->finish();
}

template class PlaneEncoder<short>;
template class PlaneEncoder<int>;

}  // namespace qmx
