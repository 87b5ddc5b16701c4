#include "coding/OrderEncoder.h"

#include <algorithm>
#include <cstddef>

namespace qmx {

template <class T>
OrderEncoder<T>::OrderEncoder(EncoderStreams<T>& streams, int plane, int order)
    : encoders(streams.encoders.bitPlanes(plane, order)),
      refinements(streams.refinements.bitPlanes(plane, order)),
      newCounts(streams.newCounts.bitPlanes(plane, order)) {
    for (std::size_t p = 0; p < runStart.size(); ++p)
        runStart[p] = std::uint64_t{0} - encoders[p].getRun();
}

template <class T>
void OrderEncoder<T>::encodeLine(const T* row, const ScanLine& line, int width) {
    for (int c = line.firstColumn; c < width; c += line.stepColumns) {
        // Signed on purpose: a folded value that wrapped counts as magnitude 0.
        const T folded = row[c];
        if (folded >= 2) encode(static_cast<std::uint64_t>(folded));
        ++position;
    }
}

template <class T>
void OrderEncoder<T>::encodeFolded(std::uint64_t folded) {
    if (folded >= 2) encode(folded);
    ++position;
}

template <class T>
void OrderEncoder<T>::encode(std::uint64_t folded) {
    const std::uint64_t magnitude = folded >> 1;
    const auto newPlane = static_cast<std::size_t>(bitLength(magnitude) - 1);
    for (std::size_t p = 0; p < newPlane; ++p) {
        refinements[p].writeBit((magnitude >> p) & 1);
        ++runStart[p];
    }
    encoders[newPlane].encodeOne(position - runStart[newPlane]);
    encoders[newPlane].writer().writeBit(folded & 1);
    ++newCounts[newPlane];
    runStart[newPlane] = position + 1;
}

template <class T>
void OrderEncoder<T>::storeRuns(int topPlane) {
    const int planes = std::min(topPlane + 1, kTableBitPlanes<T>);
    for (std::size_t p = 0; p < static_cast<std::size_t>(planes); ++p)
        encoders[p].setRun(position - runStart[p]);
}

template class OrderEncoder<short>;
template class OrderEncoder<int>;

}  // namespace qmx
