// The coarsest order coded in another way: members of CWaveletEncoder.

#include <algorithm>

#include "coding/encode/CWaveletEncoder.h"
#include "coding/encode/OrderEncoder.h"
#include "coding/syntax/FoldedValue.h"
#include "coding/syntax/SectionSyntax.h"

namespace qmx {

template <class T>
std::uint64_t CWaveletEncoder<T>::getLongestSectionBits() const {
    return longestSectionBits(sampleCountBits(), this->levels);
}

template <class T>
FoldedValues CWaveletEncoder<T>::getCoarsestValues(int plane) const {
    const int step = 1 << this->levels;
    FoldedValues values(memory);
    for (int r = 0; r < this->image->y; r += step)
        for (int c = 0; c < this->image->x; c += step)
            values.push_back(static_cast<std::uint64_t>(this->image->row(plane, r)[c]));
    return values;
}

template <class T>
void CWaveletEncoder<T>::recodeCoarsest(int plane, const FoldedValues& values,
                                        ClosingRuns closing) {
    const std::uint64_t most = *std::max_element(values.begin(), values.end());
    raiseTopPlane(bitLength(most >> 1) - 1);
    streams->restart(plane, this->levels, memory);
    // Not on the stack, of which it would take more than all else.
    const auto encoder = makeObject<OrderEncoder<T>>(memory, *streams, plane, this->levels);
    for (const std::uint64_t folded : values)
        encoder->encode(folded);
    encoder->finish();
    closingRuns[plane] = closing;
    openPlanes[plane] = 0;
    closeCoders();
}

template <class T>
void CWaveletEncoder<T>::raiseTopPlane(int topPlane) {
    // Nothing is new in the planes that come on top, so their sections are empty.
    const int highest = std::min(topPlane, kTableBitPlanes<T> - 1);
    for (int c = 0; c < this->image->planes; ++c)
        for (int o = 0; o <= this->levels; ++o)
            for (int p = this->bits + 1; p <= highest; ++p)
                streams->encoders.find(c, o, p)->setRun(
                    streams->encoders.find(c, o, this->bits)->getTotal());
    this->bits = std::max(this->bits, topPlane);
}

template <class T>
void CWaveletEncoder<T>::sendEndlessRuns(std::uint64_t longestRun) {
    streams->encoders.forEach([=](CBitChunkEncoder& encoder) {
        if (encoder.getStoredTotal() == 0 && encoder.getTotal() > longestRun)
            encoder.sendFinalZeros();
    });
    closeCoders();
}

template std::uint64_t CWaveletEncoder<short>::getLongestSectionBits() const;
template std::uint64_t CWaveletEncoder<int>::getLongestSectionBits() const;
template FoldedValues CWaveletEncoder<short>::getCoarsestValues(int) const;
template FoldedValues CWaveletEncoder<int>::getCoarsestValues(int) const;
template void CWaveletEncoder<short>::recodeCoarsest(int, const FoldedValues&, ClosingRuns);
template void CWaveletEncoder<int>::recodeCoarsest(int, const FoldedValues&, ClosingRuns);
template void CWaveletEncoder<short>::sendEndlessRuns(std::uint64_t);
template void CWaveletEncoder<int>::sendEndlessRuns(std::uint64_t);

}  // namespace qmx
