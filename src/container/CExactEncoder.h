#pragma once

#include <optional>

#include "coding/encode/CCodedSections.h"
#include "coding/encode/EncodeRows.h"
#include "container/CoefficientDispatch.h"
#include "container/ImageJob.h"
#include "container/Loss.h"

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

/// The encoder of one image, brought to a stream that restores it.
template <class T>
class CExactEncoder {
public:
    /// Requires: imageJob outlives this object.
    explicit CExactEncoder(const ImageJob& imageJob);

    /// Codes the image so that its stream restores it. Returns: none; wrappedCoefficient when the profile
    /// that the declared bits stand for cannot hold the samples; overlongSection when no stream restores
    /// the image; nothing when job was stopped. Throws: std::bad_alloc, and what job.pixels throws.
    std::optional<Loss> encode();
    /// Codes the image as the tool does, whatever its stream restores. Returns: false when stopped.
    /// Throws: as encode.
    bool encodePlain();
    /// Returns: the sections of the stream. Requires: encode has returned none, or encodePlain true.
    CCodedSections<T>& sections() { return *coded; }
    /// Returns: what encode did.
    Rescues rescues() const { return done; }

private:
    static constexpr bool kHasShort = sizeof(T) == sizeof(short);

    bool code(IRowSource<T>& source, ClosingRuns closing, bool filtersThinImages);
    bool isAmbiguous() const;
    bool isInDoubt() const;
    bool isRestoredAsItIs();
    bool rescueSections();
    bool moveToOtherRepresentatives();
    bool recode(int plane);
    bool addWholeWraps();
    void noteMove(Rescues move, bool isMoved, ClosingRuns closing);

    const ImageJob& job;
    CPixelSource<T> pixels;
    std::optional<CCodedSections<T>> coded;
    Rescues done = 0;
};

/// Returns: the bits per sample that job's samples need at least, more than it declares; any number when
/// job was stopped. Requires: 2 bytes per pixel.
int raisedBits(const ImageJob& job);
/// Returns: whether job has a side of 1 and other samples than 0, which no stream holds.
bool isOutOfReach(const ImageJob& job);

/// Codes an image and calls write(sections) with those of a stream that restores it; the stream's header
/// is job.header then, whose declared bits may have been raised. Sets rescues to what was done.
/// Returns: none; sideOfOne or overlongSection when no stream restores the image; nothing when job was
/// stopped. Throws: std::bad_alloc, what job.pixels throws and what write throws.
template <class Write>
std::optional<Loss> encodeExactly(ImageJob& job, Rescues& rescues, Write write) {
    if (isOutOfReach(job)) return Loss::sideOfOne;
    for (Rescues earlier = 0;; earlier = kDeclaredBits) {
        const std::optional<Loss> loss = dispatchCoefficients(
            job.header, MostBitsOfShort::inMemory,
            [&]<class T>() {
                CExactEncoder<T> exact(job);
                const std::optional<Loss> found = exact.encode();
                if (found == Loss::none) write(exact.sections());
                rescues = earlier | exact.rescues();
                return found;
            },
            [] { return std::optional(Loss::overlongSection); });
        if (loss != Loss::wrappedCoefficient) return loss;
        job.header.bitsPerPixel = static_cast<std::uint8_t>(raisedBits(job));
    }
}

extern template class CExactEncoder<short>;
extern template class CExactEncoder<int>;

}  // namespace qmx
