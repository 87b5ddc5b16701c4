#pragma once

#include <cstdint>
#include <memory>

#include "wavelet/CWavelet.h"
#include "wavelet/CoderStreams.h"
#include "wavelet/IWaveletEncoder.h"

namespace qmx {

/// The forward transform and the coefficient encoder.
/// Format: docs/format.md, 6 Wavelet transform and 12 Section order.
template <class T>
class CWaveletEncoder final : public IWaveletEncoder, public CWavelet<T> {
public:
    /// Owns: imageData and lineFilter if ownsBoth, also when it throws; else both must outlive the
    /// encoder. Throws: std::bad_alloc.
    CWaveletEncoder(CImageData<T>* imageData, CFilter<T>* lineFilter, bool ownsBoth);
    ~CWaveletEncoder() override;

    void transform() override;
    int writeWavelet(CBitWriter& out, int arg) override;
    void stop() override { this->requestStop(); }
    void kill() override { this->requestKill(); }

    /// Sections so far whose length did not fit its field. A stream with such a section does not
    /// restore its image. Format: docs/format.md, 15 Images that do not come back.
    std::uint64_t getOverlongSections() const { return overlongSections; }

private:
    void transformPlane(int p);

    // The stages of writeWavelet, defined with it in src/coding/.
    void foldPlanes();
    bool encodeRows(int arg);
    std::uint64_t closeCoders();
    void writeSections(CBitWriter& out);
    void writeSection(CBitWriter& out, int plane, int order, bool refinement, int bitPlane);
    int sampleCountBits() const;

    std::unique_ptr<EncoderStreams<T>> streams;
    std::uint64_t overlongSections = 0;
};

// Instantiated for short and int in CWaveletEncoder.cpp and, where writeWavelet lives, in
// src/coding/. There is no extern declaration: it would keep the latter from instantiating the
// stages that it defines.

}  // namespace qmx
