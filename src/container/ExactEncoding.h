#pragma once

#include <atomic>
#include <memory_resource>
#include <optional>

#include "bitstream/Status.h"
#include "coding/encode/CWaveletEncoder.h"
#include "container/SampleDispatch.h"
#include "image/CImageData.h"
#include "wavelet/CFilter5_3.h"

namespace qmx {

// Streams that restore their image where the plain stream would not. Every decoder reads them.
// Format: docs/format.md, 15 Images that do not come back.

/// What was done to a stream, any of it together. The numbers are those of the C interface.
using Rescues = unsigned;
/// An image with a side of 2 or 3 was filtered once, as decoders expect.
inline constexpr Rescues kThinFilter = 1;
/// The header declares more bits per sample than the caller did.
inline constexpr Rescues kDeclaredBits = 2;
/// Last runs of sections were left out.
inline constexpr Rescues kClosingRuns = 4;
/// Coefficients were sent as their other representative modulo 2^16.
inline constexpr Rescues kOtherRepresentative = 8;
/// Multiples of 2^16, which no decoder writes, were added to samples.
inline constexpr Rescues kWholeWraps = 16;
/// Sections without new coefficients got a run of their own.
inline constexpr Rescues kEndlessRuns = 32;

/// An image that is to be compressed without any loss.
struct ExactJob {
    /// The declared bits may be raised.
    TKHeader header;
    /// header.ySize rows, strideBytes from one to the next, at any address.
    const void* pixels;
    std::size_t strideBytes;
    std::pmr::memory_resource* memory;
    /// While true, all work ends. May be null.
    const std::atomic<bool>* stop = nullptr;
    Rescues rescues = 0;

    /// Requires: 0 <= r < header.ySize, header.xSize > 0.
    const unsigned char* row(int r) const {
        return static_cast<const unsigned char*>(pixels) +
               static_cast<std::size_t>(r) * strideBytes;
    }
    bool isStopped() const { return stop != nullptr && stop->load(std::memory_order_relaxed); }
};

enum class ExactOutcome {
    exact,
    stopped,
    /// The profile that the declared bits stand for cannot hold the samples.
    needsMoreBits,
    /// No stream restores the image.
    impossible,
};

/// The encoder of one image, brought to a stream that restores it. T, P: see SampleDispatch.h.
template <class T, class P>
class CExactEncoder {
public:
    /// Requires: exactJob outlives this object.
    explicit CExactEncoder(ExactJob& exactJob);

    /// Codes the image so that its stream restores it. Throws: std::bad_alloc.
    ExactOutcome encode();
    /// Codes the image as the tool does, whatever its stream restores. Returns: false when stopped.
    /// Throws: std::bad_alloc.
    bool encodePlain();

    /// Returns: the encoder of the stream. Requires: encode has returned exact, or encodePlain true.
    CWaveletEncoder<T>& getEncoder() { return *encoder; }

private:
    static constexpr bool kHasShort = sizeof(T) == sizeof(short);

    enum class ThinImage { filtered, asItIs };

    bool codeFirst(ThinImage thin);
    bool codeByRows();
    bool codeFromPlanes(ThinImage thin);
    bool loadPlanes();
    void filterThinImage();
    void makeEncoder();
    bool code(ClosingRuns closing = ClosingRuns::written);
    bool isAmbiguous() const;
    bool isInDoubt() const;
    bool isRestoredAsItIs();
    ExactOutcome rescueSections();
    bool moveToOtherRepresentatives();
    bool recode(int plane);
    bool addWholeWraps();
    bool addSamples();
    bool codeWithWraps(const FoldedValues& from, const FoldedValues& to, ClosingRuns closing);
    void noteMove(Rescues move, bool isMoved, ClosingRuns closing);

    ExactJob& job;
    CImageData<T> image;
    CFilter5_3<T> filter;
    std::optional<CWaveletEncoder<T>> encoder;
    /// The planes of the image hold the coefficients.
    bool hasPlanes = false;
};

/// Returns: the bits per sample that job's samples need at least, more than it declares; any number when
/// job was stopped.
int raisedBits(const ExactJob& job);

/// Returns: whether job has a side of 1 and other samples than 0, which no stream holds.
bool isOutOfReach(const ExactJob& job);

/// Codes an image and calls write(encoder) with the encoder of a stream that restores it; the
/// stream's header is job.header then. Throws: std::bad_alloc and what write throws.
template <class Write>
ExactOutcome encodeExactly(ExactJob& job, Write write) {
    if (isOutOfReach(job)) return ExactOutcome::impossible;
    for (;;) {
        const ExactOutcome outcome = dispatchSamples(
            job.header, MostBitsOfShort::inMemory,
            [&]<class T, class P>() {
                CExactEncoder<T, P> exact(job);
                const ExactOutcome coded = exact.encode();
                if (coded == ExactOutcome::exact) write(exact.getEncoder());
                return coded;
            },
            [] { return ExactOutcome::impossible; });
        if (outcome != ExactOutcome::needsMoreBits) return outcome;
        job.header.bitsPerPixel = static_cast<std::uint8_t>(raisedBits(job));
        job.rescues = kDeclaredBits;
    }
}

extern template class CExactEncoder<short, unsigned char>;
extern template class CExactEncoder<short, unsigned short>;
extern template class CExactEncoder<int, unsigned short>;

}  // namespace qmx
