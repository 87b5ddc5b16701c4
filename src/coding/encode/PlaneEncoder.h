#pragma once

#include <optional>

#include "coding/encode/FoldKernels.h"
#include "coding/encode/OrderEncoder.h"

namespace qmx {

/// Encodes the rows of one colour plane. The coders of the plane's sections show no bits until
/// finish. Format: docs/format.md, 7 Orders and scan order.
template <class T>
class PlaneEncoder {
public:
    /// Requires: no coefficient has a bit above topPlane; streams outlives this object;
    /// 0 <= plane < 4; levels < 6.
    PlaneEncoder(EncoderStreams<T>& streams, int plane, int levels, int topPlane);

    /// Encodes a row of width folded values; each row once, from top to bottom.
    /// Throws: std::bad_alloc.
    void encodeRow(const T* row, int index, int width);

    // The same from the lines of a sweep, that are not folded yet, each order from top to bottom.

    /// Encodes count coefficients side by side. Throws: std::bad_alloc.
    void encodeLine(int order, const T* line, std::size_t count);
    /// Encodes those of the odd columns and gives away the even ones. Throws: std::bad_alloc.
    void encodeOdds(int order, const T* line, std::size_t count, T* evens);
    /// Returns: what folding found out in these.
    const FoldedUnion<T>& getFound() const { return found; }

    /// Gives all coders their bits. Requires: nothing is encoded after it. Throws: std::bad_alloc.
    void finish();

private:
    /// Columns that are split together. A multiple of the step of the highest order, so that each
    /// block begins with the same orders, and small enough for the first cache.
    static constexpr std::size_t kBlockColumns = 512;

    void encodeBlock(const T* block, std::size_t columns, int level);

    const FoldKernels<T>* kernels;
    int levels;
    FoldedUnion<T> found;
    std::optional<OrderEncoder<T>> orders[kMaxOrders];
};

extern template class PlaneEncoder<short>;
extern template class PlaneEncoder<int>;

}  // namespace qmx
