#include "coding/encode/CPlaneEncoder.h"

#include <algorithm>

namespace qmx {

template <class T>
CPlaneEncoder<T>::CPlaneEncoder(CCodedSections<T>& sections, int plane, int firstRow)
    : kernels(&activeKernels<FoldKernels<T>>()),
      levelCount(sections.levels()),
      firstSentRow(firstRow),
      coarsestValues(sections.coarsestOf(plane)) {
    for (int o = 0; o <= levelCount; ++o)
        orders[o].emplace(sections.streams(), plane, o);
}

template <class T>
void CPlaneEncoder<T>::encodeLine(int order, int row, const T* line, std::size_t count) {
    for (std::size_t c = 0; c < count; c += kBlockColumns) {
        const std::size_t columns = std::min(kBlockColumns, count - c);
        if (isSent(row)) {
            encodeBlock(order, line + c, columns);
        } else {
            foldBlock(line + c, columns);
        }
    }
}

template <class T>
void CPlaneEncoder<T>::encodeOdds(int order, int row, const T* line, std::size_t count, T* evens) {
    for (std::size_t c = 0; c < count / 2; c += kBlockColumns) {
        const std::size_t columns = std::min(kBlockColumns, count / 2 - c);
        T odds[kBlockColumns];
        kernels->split(line + 2 * c, columns, evens + c, odds);
        encodeLine(order, row, odds, columns);
    }
    if (count % 2 != 0) evens[count / 2] = line[count - 1];
}

template <class T>
void CPlaneEncoder<T>::encodeBlock(int order, const T* block, std::size_t count) {
    COrderEncoder<T>& encoder = *orders[order];
    T* folded = encoder.room();
    kernels->fold(block, count, folded, found);
    if (order == levelCount) coarsestValues.insert(coarsestValues.end(), folded, folded + count);
    encoder.encodeRoom(count);
}

/// What is not sent still counts for the top plane (Quirk 5).
template <class T>
void CPlaneEncoder<T>::foldBlock(const T* block, std::size_t count) {
    T folded[kBlockColumns];
    kernels->fold(block, count, folded, found);
}

template <class T>
void CPlaneEncoder<T>::finish() {
    for (int o = 0; o <= levelCount; ++o)
        orders[o]->finish();
}

template class CPlaneEncoder<short>;
template class CPlaneEncoder<int>;

}  // namespace qmx
