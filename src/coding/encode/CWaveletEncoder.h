#pragma once

#include <cstdint>

#include "coding/encode/ClosingRuns.h"
#include "coding/encode/IWaveletEncoder.h"
#include "coding/syntax/CoderStreams.h"
#include "wavelet/CWavelet.h"
#include "wavelet/IRowSource.h"

namespace qmx {

/// The forward transform and the coefficient encoder.
/// Format: docs/format.md, 6 Wavelet transform and 12 Section order.
template <class T>
class CWaveletEncoder final : public IWaveletEncoder, public CWavelet<T> {
public:
    /// Owns: imageData and lineFilter if ownsBoth, also when it throws; else both must outlive the
    /// encoder, as memory must. Throws: std::bad_alloc.
    CWaveletEncoder(CImageData<T>* imageData, CFilter<T>* lineFilter, bool ownsBoth,
                    std::pmr::memory_resource* workMemory = std::pmr::new_delete_resource());
    ~CWaveletEncoder() override;

    void transform() override;
    /// The same as codeCoefficients, an announcement of the size to out, and writeStream.
    int writeWavelet(CBitWriter& out, int arg) override;
    void stop() override { this->requestStop(); }
    void kill() override { this->requestKill(); }

    /// The first part of writeWavelet: codes all sections, writes nothing. Requires: as writeWavelet.
    /// Returns: 0; 8 when it was suspended. Throws: std::bad_alloc.
    int codeCoefficients(int arg);
    /// The same as transform and codeCoefficients(0), in one pass over rows from elsewhere: the planes of
    /// the image stay as they are, and need not even be there in memory. A stop has no effect.
    /// Requires: canSweep(); nothing was coded before. Returns: 0; 8 when it was killed; nothing may
    /// be coded after it then. Throws: std::bad_alloc and what source throws.
    int codeRows(IRowSource<T>& source);
    /// Returns: the exact length of the stream that writeStream writes. Requires: a coding
    /// function has returned 0.
    std::uint64_t getStreamBits() const { return streamBits; }
    /// The second part of writeWavelet; each call writes the same stream, up to a section behind which
    /// the watched flag is set. Requires: a coding function has returned 0. Throws: what out throws.
    void writeStream(CBitWriter& out);
    /// Returns: the bit of the stream written last at which decoders expect a section header and find
    /// something else, because the section in front of it is longer than its length field can say;
    /// kNeverMisread when there is none as far as the stream was written.
    std::uint64_t getMisreadBit() const { return misreadBit; }
    static constexpr std::uint64_t kNeverMisread = ~std::uint64_t{0};

    // What makes a complete stream lose its image. Requires: a coding function has returned 0.
    // Format: docs/format.md, 15 Images that do not come back.

    /// Returns: sections whose length does not fit its field.
    std::uint64_t getOverlongSections() const { return overlongSections; }
    /// Returns: coefficients that do not fit T when they are folded, and count as 0.
    std::uint64_t getLostCoefficients() const { return lostCoefficients; }
    /// Returns: sections without new coefficients that cover more than a decoder passes over.
    std::uint64_t getEndlessSections() const { return endlessSections; }

    // What makes up for it: another way to code the coarsest order of a colour plane. A stream then
    // differs, decoders and their image do not. Requires: as above, but for setClosingRuns, which
    // may come before.

    /// Returns: the highest bit plane that the stream sends.
    int getTopPlane() const { return this->bits; }
    /// Returns: the bits that an n section of the coarsest order may have.
    std::uint64_t getLongestSectionBits() const;
    /// Returns: the folded values of the coarsest order, in scan order. Requires: codeCoefficients has
    /// returned 0. Throws: std::bad_alloc.
    FoldedValues getCoarsestValues(int plane) const;
    /// Codes other values in their place. Requires: as many, with magnitudes of up to
    /// kTableBitPlanes<T> bits. Throws: std::bad_alloc.
    void recodeCoarsest(int plane, const FoldedValues& values, ClosingRuns closing);
    /// How the sections of the coarsest order are closed that would be too long otherwise.
    void setClosingRuns(int plane, ClosingRuns closing) { closingRuns[plane] = closing; }
    /// Spells out the runs of sections without new coefficients that cover more than longestRun.
    /// Throws: std::bad_alloc.
    void sendEndlessRuns(std::uint64_t longestRun = kEndRun + 1);

    std::pmr::memory_resource* getMemory() const { return memory; }

private:
    void transformPlane(int p);
    void sweepPlanes();

    // The stages of writeWavelet, defined with it in src/coding/.
    bool foldPlanes();
    bool encodeRows(int arg);
    void closeCoders();
    void closeAndMeasure(int plane, int order, int bitPlane);
    void closeSection(CBitChunkEncoder& encoder, int plane, int order, int bitPlane);
    bool needsZerosBehind(int plane, int order, bool refinement, int bitPlane) const;
    void raiseTopPlane(int topPlane);
    void writeSection(CBitWriter& out, int plane, int order, bool refinement, int bitPlane);
    int sampleCountBits() const;

    std::pmr::memory_resource* memory;
    MemoryObject<EncoderStreams<T>> streams;
    std::uint64_t overlongSections = 0;
    std::uint64_t lostCoefficients = 0;
    std::uint64_t endlessSections = 0;
    ClosingRuns closingRuns[kTablePlanes]{};
    /// The bit planes of the coarsest order whose last run is read from the section behind them.
    std::uint32_t openPlanes[kTablePlanes]{};
    /// Bits of the stream as lazy writers are told, a little too many.
    std::uint64_t estimateBits = 0;
    std::uint64_t streamBits = 0;
    std::uint64_t misreadBit = kNeverMisread;
};

// Instantiated for short and int in CWaveletEncoder.cpp and, where writeWavelet lives, in
// src/coding/. There is no extern declaration: it would keep the latter from instantiating the
// stages that it defines.

}  // namespace qmx
