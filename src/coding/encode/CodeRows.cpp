// Transform and coefficient encoder in one, row by row: a member of CWaveletEncoder.

#include "bitstream/Status.h"
#include "coding/encode/CRowLines.h"
#include "coding/encode/CWaveletEncoder.h"
#include "coding/syntax/FoldedValue.h"
#include "wavelet/IRowSource.h"

namespace qmx {
namespace {

/// What codes one colour plane.
template <class T>
struct PlaneInWork {
    PlaneInWork(EncoderStreams<T>& streams, const CImageData<T>& image, int levels,
                CImageData<T>& firstRows, int plane, std::pmr::memory_resource* memory)
        : encoder(streams, plane, levels, kTableBitPlanes<T> - 1),
          lines(image, levels, firstRows, plane, encoder, memory),
          sweep(lines) {}

    PlaneEncoder<T> encoder;
    CRowLines<T> lines;
    CForwardSweep<T, CRowLines<T>> sweep;
};

}  // namespace

template <class T>
int CWaveletEncoder<T>::codeRows(IRowSource<T>& source) {
    const int planes = this->image->planes;
    CImageData<T> firstRows(this->image->x, CRowLines<T>::kRows, planes, memory);
    MemoryObject<PlaneInWork<T>> inWork[CImageData<T>::kMaxPlanes];
    for (int p = 0; p < planes; ++p)
        inWork[p] = makeObject<PlaneInWork<T>>(memory, *streams, *this->image, this->levels,
                                               firstRows, p, memory);
    for (int r = 0; r < this->image->y; ++r) {
        if (this->isKilled()) return this->status = kSuspended;
        source.load(firstRows, r % CRowLines<T>::kRows, r);
        for (int p = 0; p < planes; ++p)
            inWork[p]->sweep.takeRow(r);
    }
    FoldedUnion<T> all;
    for (int p = 0; p < planes; ++p) {
        inWork[p]->encoder.finish();
        const FoldedUnion<T>& found = inWork[p]->encoder.getFound();
        all.bits = static_cast<T>(all.bits | found.bits);
        all.lost += found.lost;
    }
    this->bits = topPlaneOf(all.bits);
    lostCoefficients = all.lost;
    closeCoders();
    return kComplete;
}

template int CWaveletEncoder<short>::codeRows(IRowSource<short>&);
template int CWaveletEncoder<int>::codeRows(IRowSource<int>&);

}  // namespace qmx
