#pragma once

#include "coding/decode/IWaveletDecoder.h"
#include "coding/syntax/CoderStreams.h"
#include "coding/syntax/SectionCounters.h"
#include "wavelet/CWavelet.h"
#include "wavelet/IRowSink.h"

namespace qmx {

template <class T>
class PlaneDecoder;

/// Destroys what only src/coding/ knows.
template <class T>
struct PlaneDecoderRelease {
    std::pmr::memory_resource* memory = nullptr;
    void operator()(PlaneDecoder<T>* decoder) const noexcept;
};

/// The coefficient decoder and the inverse transform.
/// Format: docs/format.md, 6.6 Inverse transform and 13 Decoding.
template <class T>
class CWaveletDecoder final : public IWaveletDecoder, public CWavelet<T> {
public:
    /// Owns: imageData and lineFilter if ownsBoth, also when it throws; else both must outlive the
    /// decoder, as memory must. Throws: std::bad_alloc.
    CWaveletDecoder(CImageData<T>* imageData, CFilter<T>* lineFilter, bool ownsBoth,
                    std::pmr::memory_resource* workMemory = std::pmr::new_delete_resource());
    ~CWaveletDecoder() override;

    void untransform() override;
    int readWavelet(CBitReader& in, int arg) override;
    void convertAndCopyToT(void* out, int bytesPerPixel, int limitBits) override;
    void stop() override { this->requestStop(); }
    void kill() override { this->requestKill(); }

    // The same as readWavelet and untransform without planes, row by row: the image gives the size
    // alone. Requires: nothing was read before.

    /// Returns: the result of readWavelet(in, 0), a kill of what follows aside. Throws: std::bad_alloc.
    int readSections(CBitReader& in);
    /// Gives all rows to sink, from the first to the last. A stop has no effect. Requires:
    /// canSweep(); readSections has returned a usable result, and its reader is as it was.
    /// Returns: whether all were given; not when it was killed, or when sink wanted no more.
    /// Throws: std::bad_alloc and what sink throws.
    bool restoreRows(IRowSink<T>& sink);

private:
    void untransformPlane(int p);
    void sweepPlanes();

    // The stages of readWavelet, defined with it in src/coding/.
    void forgetSections();
    int readSections(CBitReader& in, int sectionLimit);
    bool readSection(CBitReader& in);
    void assignSignificance(CBitReader& in, int plane, int order, std::uint64_t lengthBits);
    void assignRefinement(CBitReader& in, int plane, int order, std::uint64_t lengthBits);
    void openPlane(int plane);
    bool clearPlanes();
    bool decodeRows(int arg);

    std::pmr::memory_resource* memory;
    MemoryObject<DecoderStreams<T>> streams;
    SectionCounters counters;
    /// The sections of the plane that is being decoded; parts of them have been read ahead.
    std::unique_ptr<PlaneDecoder<T>, PlaneDecoderRelease<T>> planeDecoder;
};

// Instantiated for short and int in CWaveletDecoder.cpp and, where readWavelet lives, in
// src/coding/. There is no extern declaration: it would keep the latter from instantiating the
// stages that it defines.

}  // namespace qmx
