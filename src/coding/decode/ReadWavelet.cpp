// The coefficient decoder: readWavelet of CWaveletDecoder and its stages.

#include <algorithm>
#include <cstdio>

#include "bitstream/Throwing.h"
#include "coding/decode/CWaveletDecoder.h"
#include "coding/decode/PlaneDecoder.h"
#include "coding/syntax/SectionSyntax.h"

namespace qmx {
namespace {

struct Label {
    Label(const char* format, int plane, int order, std::int64_t bitPlane) {
        std::snprintf(text, sizeof text, format, plane, order, static_cast<int>(bitPlane));
    }
    char text[CBitStreamer::kNameBytes];
};

}  // namespace

template <class T>
void CWaveletDecoder<T>::forgetSections() {
    this->bits = -1;
    counters.reset(this->bits);
    streams->significances.forEach([](CBitInfiniteReader& reader) { reader.reset(); });
    streams->refinements.forEach([](CBitInfiniteReader& reader) { reader.reset(); });
}

template <class T>
void CWaveletDecoder<T>::assignSignificance(CBitReader& in, int plane, int order,
                                            std::uint64_t lengthBits) {
    const std::int64_t bitPlane = counters.take(plane, order, false);
    CBitInfiniteReader* reader = streams->significances.find(plane, order, bitPlane);
    if (reader == nullptr) return;
    CBitDecoder* decoder = streams->decoders.find(plane, order, bitPlane);
    const Label label("n coder for plane %d ord %d bits %d", plane, order, bitPlane);
    decoder->setName(label.text);
    reader->setName(label.text);
    // An empty section has no payload of its own; what follows belongs to others.
    if (lengthBits != 0) reader->create(&in, lengthBits);
    decoder->attach(reader);
}

template <class T>
void CWaveletDecoder<T>::assignRefinement(CBitReader& in, int plane, int order,
                                          std::uint64_t lengthBits) {
    const std::int64_t bitPlane = counters.take(plane, order, true);
    CBitInfiniteReader* reader = streams->refinements.find(plane, order, bitPlane);
    if (reader == nullptr) return;
    reader->setName(Label("u streamer for plane %d ord %d bits %d", plane, order, bitPlane).text);
    reader->create(&in, lengthBits);
}

/// Reads one section header and passes over its payload. Returns: false when the status is final:
/// end mark, invalid or killed.
template <class T>
bool CWaveletDecoder<T>::readSection(CBitReader& in) {
    SectionHeader header;
    const SectionBounds bounds{this->image->planes, this->levels,
                               sampleCountBits(this->image->x, this->image->y)};
    const NextSection next = readNextSection(in, header, bounds);
    if (next == NextSection::foreign) this->status = kInvalidSection;
    if (next != NextSection::present) return false;
    if (header.isRefinement) {
        assignRefinement(in, header.plane, header.order, header.lengthBits);
    } else {
        assignSignificance(in, header.plane, header.order, header.lengthBits);
    }
    if (this->isKilled()) {
        this->status = kKilled;
        return false;
    }
    in.skip(header.lengthBits);
    return true;
}

template <class T>
int CWaveletDecoder<T>::readSections(CBitReader& in, int sectionLimit) {
    forgetSections();
    planeDecoder.reset();
    try {
        this->bits = readTopPlane(in);
        counters.reset(this->bits);
        for (int count = 0; readSection(in);)
            if (sectionLimit >= 1 && ++count == sectionLimit) throwSectionLimit();
    } catch (int) {
        this->status = kCut;
    }
    return this->status;
}

template <class T>
void CWaveletDecoder<T>::openPlane(int plane) {
    planeDecoder.reset();
    auto opened = makeObject<PlaneDecoder<T>>(memory, *streams, counters, plane, this->bits,
                                              this->levels, this->image->samplesPerPlane(), memory);
    planeDecoder = {opened.release(), {memory}};
}

template <class T>
bool CWaveletDecoder<T>::decodeRows(int arg) {
    const DecodeKernels<T>& kernels = decodeKernels<T>(activeCpuLevel());
    const bool suspended = this->scanRows(arg, [&](int p, int r) {
        if (planeDecoder == nullptr || planeDecoder->plane() != p) openPlane(p);
        planeDecoder->decodeRow(kernels, r, this->image->row(p, r), this->image->x);
    });
    if (planeDecoder != nullptr) planeDecoder->storeRuns();
    return suspended;
}

template <class T>
int CWaveletDecoder<T>::readSections(CBitReader& in) {
    this->status = kComplete;
    return readSections(in, 0);
}

/// Returns: false when it was cancelled; the planes must not be decoded then.
template <class T>
bool CWaveletDecoder<T>::clearPlanes() {
    for (int p = 0; p < this->image->planes; ++p)
        for (int r = 0; r < this->image->y; ++r) {
            if (this->isCancelled()) return false;
            std::fill_n(this->image->row(p, r), this->image->stride, T{0});
        }
    return true;
}

template <class T>
int CWaveletDecoder<T>::readWavelet(CBitReader& in, int arg) {
    this->status = kComplete;
    if (this->isFreshStart()) {
        if (!isUsable(readSections(in, arg))) return this->status;
        // Not before: a header may name gigabytes of planes for a stream that is none.
        if (!clearPlanes()) return this->status = kSuspended;
    }
    if (decodeRows(arg)) this->status = kSuspended;
    return this->status;
}

template <class T>
void PlaneDecoderRelease<T>::operator()(PlaneDecoder<T>* decoder) const noexcept {
    ObjectRelease<PlaneDecoder<T>>{memory}(decoder);
}

template struct PlaneDecoderRelease<short>;
template struct PlaneDecoderRelease<int>;
template int CWaveletDecoder<short>::readSections(CBitReader&);
template int CWaveletDecoder<int>::readSections(CBitReader&);
template int CWaveletDecoder<short>::readWavelet(CBitReader&, int);
template int CWaveletDecoder<int>::readWavelet(CBitReader&, int);

}  // namespace qmx
