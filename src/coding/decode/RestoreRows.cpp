// Coefficient decoder and inverse transform in one, row by row: a member of CWaveletDecoder.

#include <algorithm>
#include <bit>

#include "coding/decode/CWaveletDecoder.h"
#include "coding/decode/PlaneDecoder.h"
#include "wavelet/CInverseSweep.h"

namespace qmx {
namespace {

/// Returns: how many rows behind row r have to be there when row r is restored. Level 0 needs a smooth
/// row after the next and the detail row behind it; so does each level, for the row that the finer
/// level needs, in its own distance: 2 + 4 + .. + 2^levels, of which the last row is behind by
/// 3 rows of the last level instead of 2.
int rowsAhead(int levels) {
    return 5 << (levels - 1);
}

/// Rows that a sweep still reads in front of the one that it restores, and those of its last step.
constexpr int kRowsBehind = 8;

/// What restores one colour plane.
template <class T>
struct PlaneInWork {
    PlaneInWork(DecoderStreams<T>& streams, const SectionCounters& counters, int plane,
                int topPlane, int levels, const CImageData<T>& image, CImageData<T>& ring,
                std::pmr::memory_resource* memory)
        : decoder(streams, counters, plane, topPlane, levels, image.samplesPerPlane(), memory),
          lines(image, levels, memory),
          sweep(lines) {
        lines.setRing(ring.plane[plane], ring.y);
    }

    PlaneDecoder<T> decoder;
    CLevelLines<T> lines;
    CInverseSweep<T> sweep;
};

}  // namespace

// The plane is a ring of rows: coefficients are decoded into it as far ahead of the sweep as it needs,
// and rows leave it when they are restored. Plain way: the whole plane, first decoded, then restored.
template <class T>
bool CWaveletDecoder<T>::restoreRows(IRowSink<T>& sink) {
    const CImageData<T>& whole = *this->image;
    const int ahead = rowsAhead(this->levels);
    const auto ringRows =
        static_cast<int>(std::bit_ceil(static_cast<unsigned>(ahead + kRowsBehind)));
    CImageData<T> ring(whole.x, ringRows, whole.planes, memory);
    MemoryObject<PlaneInWork<T>> inWork[CImageData<T>::kMaxPlanes];
    for (int p = 0; p < whole.planes; ++p)
        inWork[p] = makeObject<PlaneInWork<T>>(memory, *streams, counters, p, this->bits,
                                               this->levels, whole, ring, memory);
    const DecodeKernels<T>& kernels = decodeKernels<T>(activeCpuLevel());
    int decoded = 0;
    for (int r = 0; r < whole.y; ++r) {
        if (this->isKilled()) return false;
        for (; decoded < whole.y && decoded <= r + ahead; ++decoded) {
            if (this->isKilled()) return false;
            for (int p = 0; p < whole.planes; ++p) {
                T* row = ring.row(p, decoded % ringRows);
                std::fill_n(row, ring.stride, T{0});
                inWork[p]->decoder.decodeRow(kernels, decoded, row, whole.x);
            }
        }
        for (int p = 0; p < whole.planes; ++p)
            inWork[p]->sweep.restoreRow(r);
        if (!sink.take(ring, r % ringRows, r)) return false;
    }
    return true;
}

template bool CWaveletDecoder<short>::restoreRows(IRowSink<short>&);
template bool CWaveletDecoder<int>::restoreRows(IRowSink<int>&);

}  // namespace qmx
