#pragma once

#include <optional>

#include "coding/encode/CCodedSections.h"
#include "coding/encode/CRowsEncoder.h"
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

/// The encoder of one image, whose rows come one after the other, brought to a stream that restores it.
template <class T>
class CExactEncoder {
public:
    /// filtersThinImages: as streams need it that restore such images, and plain ones do not have it.
    /// Requires: imageJob outlives this object. Throws: std::bad_alloc.
    CExactEncoder(ImageJob& imageJob, bool filtersThinImages);

    /// Codes the next row of job.pixels. Requires: there is one.
    /// Throws: std::bad_alloc, and what job.pixels throws.
    void takeRow() { rows->takeRow(pixels); }
    int rowsTaken() const { return rows->rowsTaken(); }
    /// Returns: whether 16-bit coefficients stand in the place of 32-bit ones and have turned out not to be the
    /// same, or not to be enough for a stream that restores the image. Requires: no call since finish.
    bool isTooNarrow() const;
    /// Closes the sections, which are those of the plain stream. Requires: all rows were taken; called once.
    /// Throws: std::bad_alloc.
    void finish();
    /// Changes the sections so that their stream restores the image; it may raise the bits that
    /// job.header declares. Returns: none; wrappedCoefficient when the profile that the declared bits
    /// stand for cannot hold the samples; overlongSection when no stream that is known restores the image;
    /// nothing when job was stopped. Requires: finish was called; the image was filtered.
    /// Throws: std::bad_alloc, and what job.pixels throws.
    std::optional<Loss> makeRestorable();
    /// Returns: the sections of the stream. Requires: finish was called, and makeRestorable, if it was, has
    /// returned none.
    CCodedSections<T>& sections() { return *coded; }
    /// Returns: what was done so that the stream restores the image.
    Rescues rescues() const { return done; }

private:
    static constexpr bool kHasShort = sizeof(T) == sizeof(short);

    bool isAmbiguous() const;
    bool isInDoubt() const;
    bool isRestoredAsItIs();
    bool rescueSections();
    bool moveToOtherRepresentatives();
    bool recode(int plane);
    bool addWholeWraps();
    bool codeAgain(IRowSource<T>& source, ClosingRuns closing);
    void noteMove(Rescues move, bool isMoved, ClosingRuns closing);

    ImageJob& job;
    CPixelSource<T> pixels;
    std::optional<CCodedSections<T>> coded;
    /// Until all rows are coded.
    std::optional<CRowsEncoder<T>> rows;
    Rescues done = 0;
};

/// Returns: the bits per sample that job's samples need at least, more than it declares; any number when
/// job was stopped. Requires: 2 bytes per pixel.
int raisedBits(const ImageJob& job);
/// Returns: whether job has a side of 1 and other samples than 0, which no stream holds.
bool isOutOfReach(const ImageJob& job);

extern template class CExactEncoder<short>;
extern template class CExactEncoder<int>;

}  // namespace qmx
