#include "coding/OrderDecoder.h"

#include <algorithm>
#include <cstddef>

#include "coding/FoldedValue.h"

namespace qmx {

template <class T>
OrderDecoder<T>::OrderDecoder(DecoderStreams<T>& streams, int plane, int order,
                              const ReceivedPlanes& received)
    : decoders(streams.decoders.bitPlanes(plane, order)),
      refinements(streams.refinements.bitPlanes(plane, order)),
      highest(std::min(received.top, kTableBitPlanes<T> - 1)),
      lowest(static_cast<int>(std::clamp<std::int64_t>(received.n + 1, 0, kTableBitPlanes<T>))),
      unrefined(received.u) {
    for (int p = highest; p >= lowest; --p)
        nextNew[static_cast<std::size_t>(p)] = decoders[p].getRun();
    findNextNew();
}

template <class T>
void OrderDecoder<T>::findNextNew() {
    soonest = ~std::uint64_t{0};
    for (int p = highest; p >= lowest; --p)
        soonest = std::min(soonest, nextNew[static_cast<std::size_t>(p)]);
}

template <class T>
void OrderDecoder<T>::decodeLine(T* row, const ScanLine& line, int width) {
    std::int64_t column = line.firstColumn;
    while (column < width) {
        const auto left =
            static_cast<std::uint64_t>(line.countFrom(static_cast<int>(column), width));
        const std::uint64_t zeros = std::min(soonest - position, left);
        position += zeros;
        column += static_cast<std::int64_t>(zeros) * line.stepColumns;
        if (zeros == left) return;
        row[column] = unfold<T>(decodeNew());
        ++position;
        column += line.stepColumns;
    }
}

template <class T>
std::uint64_t OrderDecoder<T>::decodeNew() {
    int newPlane = highest;
    while (nextNew[static_cast<std::size_t>(newPlane)] != position)
        --newPlane;
    CBitDecoder& decoder = decoders[newPlane];
    const std::uint64_t sign = decoder.readRawBit();
    decoder.readRun();
    nextNew[static_cast<std::size_t>(newPlane)] = position + 1 + decoder.getRun();
    for (int p = newPlane - 1; p >= lowest; --p)
        ++nextNew[static_cast<std::size_t>(p)];
    findNextNew();
    return refine((std::uint64_t{2} << newPlane) | sign, newPlane);
}

template <class T>
std::uint64_t OrderDecoder<T>::refine(std::uint64_t folded, int newPlane) {
    int p = newPlane - 1;
    for (; p >= 0 && p > unrefined; --p)
        folded |= refinements[p].readBit() << (p + 1);
    // Planes p down to 0 are unknown: a quarter of their range is closer to most coefficients than
    // its middle. Bit p of the folded value is bit p - 1 of the magnitude.
    if (p >= 1) folded |= std::uint64_t{1} << p;
    return folded;
}

template <class T>
void OrderDecoder<T>::storeRuns() {
    for (int p = highest; p >= lowest; --p)
        decoders[p].setRun(nextNew[static_cast<std::size_t>(p)] - position);
}

template class OrderDecoder<short>;
template class OrderDecoder<int>;

}  // namespace qmx
