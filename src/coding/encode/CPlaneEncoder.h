#pragma once

#include <optional>

#include "coding/encode/CCodedSections.h"
#include "coding/encode/COrderEncoder.h"
#include "coding/encode/FoldKernels.h"

namespace qmx {

/// Encodes the coefficients of one colour plane, line by line as a sweep gives them, each order from top
/// to bottom.
/// Format: docs/format.md, 7 Orders and scan order.
template <class T>
class CPlaneEncoder {
public:
    /// firstRow: lines of rows of the plane in front of it are folded, and left out.
    /// Requires: sections outlive this object; 0 <= plane < 3. Throws: std::bad_alloc.
    CPlaneEncoder(CCodedSections<T>& sections, int plane, int firstRow);

    /// Encodes count coefficients of an order, side by side in row `row` of the plane; none when the
    /// image has no orders. Throws: std::bad_alloc.
    void encodeLine(int order, int row, const T* line, std::size_t count);
    /// Encodes those of the odd columns and gives away the even ones. Throws: std::bad_alloc.
    void encodeOdds(int order, int row, const T* line, std::size_t count, T* evens);
    /// Returns: what folding found out in all of them.
    const FoldedUnion<T>& getFound() const { return found; }
    /// Gives all sections their bits. Requires: nothing is encoded after it. Throws: std::bad_alloc.
    void finish();

private:
    /// Columns that are folded together: few enough for the first cache.
    static constexpr std::size_t kBlockColumns = 512;
    static_assert(kBlockColumns <= COrderEncoder<T>::kRoom);

    bool isSent(int row) const { return row >= firstSentRow && levelCount >= 0; }
    void encodeBlock(int order, const T* block, std::size_t count);
    void foldBlock(const T* block, std::size_t count);

    const FoldKernels<T>* kernels;
    int levelCount;
    int firstSentRow;
    std::pmr::vector<T>& coarsestValues;
    FoldedUnion<T> found;
    std::optional<COrderEncoder<T>> orders[kMaxOrders];
};

extern template class CPlaneEncoder<short>;
extern template class CPlaneEncoder<int>;

}  // namespace qmx
