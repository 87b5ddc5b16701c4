#include "coding/decode/CPlaneDecoder.h"

#include <algorithm>

#include "coding/syntax/ScanOrder.h"

namespace qmx {
namespace {

// The candidates in each window of order o, in a plane of S samples, are
//
//     S / (32 * 2^o), not below kLeastCapacities[o], not above kMostCapacities[o],
//     and no more than the order has, but at least 256,
//
// in whole groups of 64. Fewer refills take less time: a photograph, by the capacity of order 0, ns per
// sample: 1.89 with 4096, 1.78 with 8192, 1.70 with 16384, 1.71 with 32768 (2026-11-21). All windows of a
// plane together stay below the constants of docs/limits.md.

constexpr std::uint32_t kLeastCapacities[kMaxOrders] = {4096, 1024, 512, 256, 256, 256};
constexpr std::uint32_t kMostCapacities[kMaxOrders] = {16384, 8192, 4096, 1024, 512, 256};
/// Samples of the plane for one candidate of order 0.
constexpr std::uint64_t kSamplesPerCandidate = 32;
/// What the refill of windows takes at least.
constexpr std::uint64_t kLeastWindow = 256;

/// What is parsed behind the end of the order is of no use.
std::uint32_t capacityOf(int order, std::uint64_t samplesPerPlane, std::uint64_t coefficients) {
    const std::uint64_t wanted = (samplesPerPlane >> order) / kSamplesPerCandidate;
    const std::uint64_t capacity = std::clamp<std::uint64_t>(
        wanted / kGroupSize * kGroupSize, kLeastCapacities[order], kMostCapacities[order]);
    const std::uint64_t groups = (coefficients + kGroupSize - 1) / kGroupSize;
    return static_cast<std::uint32_t>(std::clamp(groups * kGroupSize, kLeastWindow, capacity));
}

/// Returns: how many coefficients of a picture belong to an order.
std::uint64_t coefficientsOf(int order, int levels, const ImageShape& shape) {
    const std::uint64_t here = shape.reducedBy(order).samplesPerPlane();
    return order == levels ? here : here - shape.reducedBy(order + 1).samplesPerPlane();
}

template <class T>
std::size_t bitmapBytes(const OrderWindows<T>& windows) {
    return windows.capacity / 8 + SectionWindow::kSlackBytes;
}

/// Requires: all bytes of windows are 0.
template <class T>
void begin(OrderWindows<T>& windows, CReceivedSections<T>& sections, int plane, int order) {
    constexpr std::int64_t kPlanes = kTableBitPlanes<T>;
    const CSectionCounters& counters = sections.counters();
    PlaneReaders* const readers = sections.streams().bitPlanes(plane, order);
    windows.highest = std::min(sections.topPlane(), kTableBitPlanes<T> - 1);
    windows.lowest = static_cast<int>(
        std::clamp<std::int64_t>(counters.significance(plane, order) + 1, 0, kPlanes));
    windows.unrefined =
        static_cast<int>(std::clamp<std::int64_t>(counters.refinement(plane, order), -1, kPlanes));
    windows.left = coefficientsOf(order, sections.levels(), sections.shape());
    windows.capacity = capacityOf(order, sections.shape().samplesPerPlane(), windows.left);
    for (int p = 0; p <= windows.highest; ++p) {
        windows.windows[p].decoder = &readers[p].decoder;
        windows.windows[p].end = readers[p].significanceEnd;
        windows.refinements[p].reader = &readers[p].refinement;
        windows.refinements[p].span = windows.refinements[p].reader->loadedBits();
    }
}

template <class T>
int windowCount(const OrderWindows<T>& windows) {
    return std::max(windows.highest - windows.lowest + 1, 0);
}

}  // namespace

template <class T>
CPlaneDecoder<T>::CPlaneDecoder(CReceivedSections<T>& sections, int plane)
    : kernels(&activeKernels<DecodeKernels<T>>()),
      levels(sections.levels()),
      restoredLevels(
          levelsToRestore(sections.levels() + sections.reduction(), sections.reduction())),
      width(sections.shape().width),
      orders(static_cast<std::size_t>(levels + 1), sections.memory()),
      bitmaps(sections.memory()) {
    std::size_t bytes = 0;
    for (int order = 0; order <= levels; ++order) {
        OrderWindows<T>& windows = orders[static_cast<std::size_t>(order)];
        begin(windows, sections, plane, order);
        bytes += 2 * bitmapBytes(windows) * static_cast<std::size_t>(windowCount(windows));
    }
    bitmaps.resize(bytes);
    unsigned char* next = bitmaps.data();
    for (int order = 0; order <= levels; ++order) {
        OrderWindows<T>& windows = orders[static_cast<std::size_t>(order)];
        for (int p = windows.highest; p >= windows.lowest; --p) {
            SectionWindow& window = windows.windows[p];
            window.nextNew = window.decoder->getRun();
            window.fresh = next;
            window.negatives = next + bitmapBytes(windows);
            next += 2 * bitmapBytes(windows);
        }
    }
}

template <class T>
void CPlaneDecoder<T>::decodeRow(int row, T* samples) {
    if (levels < 0) std::fill_n(samples, width, T{0});
    forEachOrder(row, levels, [&](const ScanLine& line) {
        OrderWindows<T>& sections = orders[static_cast<std::size_t>(line.order)];
        const int count = line.countFrom(line.firstColumn, width);
        // Behind the columns of the next level.
        T* const odds = samples + ((width - 1) >> (line.order + 1)) + 1;
        if (line.firstColumn != 0)
            kernels->decodeLine(sections, odds, nullptr, count);
        else
            kernels->decodeLine(sections, samples, line.order < restoredLevels ? odds : nullptr,
                                count);
    });
}

template class CPlaneDecoder<short>;
template class CPlaneDecoder<int>;

}  // namespace qmx
