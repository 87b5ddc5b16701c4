#pragma once

#include <cstdint>
#include <string>

#include "coding/encode/CWaveletEncoder.h"
#include "container/StreamReading.h"
#include "container/TKHeader.h"

namespace qmx {

// Streams that lose what nobody asked for.
// Format: docs/format.md, 15 Images that do not come back.

enum class Loss {
    none,
    /// A side of 1: such images have no coefficients.
    sideOfOne,
    /// A side of 2 or 3: decoders filter the longer side, which was not filtered.
    thinImage,
    /// Coefficients that do not fit their type when folded.
    wrappedCoefficient,
    /// A section that covers more coefficients than a run code can pass over.
    endlessRun,
    /// A section that is longer than its length field can say.
    overlongSection,
    /// Rows that a suspended encoder left out.
    suspension,
    /// A stream that is shorter than the complete one.
    cut,
};

/// What happened to a stream, with the numbers that explain it.
struct LossReport {
    Loss loss = Loss::none;
    /// Sections or coefficients that it happened to.
    std::uint64_t count = 0;
    std::uint64_t streamBytes = 0;
    std::uint64_t completeBytes = 0;
    /// What decoders make of the stream, as far as a rate asked for a loss; else whole.
    Reading reading = Reading::whole;
};

/// Returns: the reason in plain words with its numbers, without a full stop, and what would help.
std::string describeLoss(const LossReport& report);

/// How a stream came into being.
struct StreamFate {
    /// Bytes behind the header that were written.
    const unsigned char* stream = nullptr;
    std::uint64_t streamBytes = 0;
    bool wasSuspended = false;
    /// A rate leaves less than the complete stream takes.
    bool isLossAskedFor = false;
};

/// Returns: the first reason there is to doubt that the stream of encoder restores its image.
/// Requires: a coding function of encoder has returned 0.
template <class T>
Loss suspectLoss(const CWaveletEncoder<T>& encoder, const TKHeader& header,
                 bool wasSuspended = false, bool wasCut = false);

/// Returns: whether a reason needs no comparison.
bool isCertain(Loss loss);

/// Returns: whether findLoss will compare, for which it needs the encoder's planes. Requires: a coding
/// function of encoder has returned 0.
template <class T>
bool hasDoubts(const CWaveletEncoder<T>& encoder, const TKHeader& header);

/// Finds out whether the stream that encoder has written restores its image. In most cases the
/// encoder knows; where it has to doubt, the stream is decoded and compared.
///
///  - fate.stream: null for a complete stream that is no longer in memory; it is then made again.
///  - fate.isLossAskedFor: a stream that was cut loses what it should, as long as decoders come to the cut.
///
/// Requires: encoder's codeCoefficients has returned 0, or its codeRows, and it has no doubts about a
/// complete stream. Its planes hold nothing of use afterwards.
/// Throws: std::bad_alloc, for images that have to be compared.
template <class T>
LossReport findLoss(CWaveletEncoder<T>& encoder, const TKHeader& header, const StreamFate& fate);

extern template Loss suspectLoss<short>(const CWaveletEncoder<short>&, const TKHeader&, bool, bool);
extern template Loss suspectLoss<int>(const CWaveletEncoder<int>&, const TKHeader&, bool, bool);
extern template bool hasDoubts<short>(const CWaveletEncoder<short>&, const TKHeader&);
extern template bool hasDoubts<int>(const CWaveletEncoder<int>&, const TKHeader&);
extern template LossReport findLoss<short>(CWaveletEncoder<short>&, const TKHeader&,
                                           const StreamFate&);
extern template LossReport findLoss<int>(CWaveletEncoder<int>&, const TKHeader&, const StreamFate&);

}  // namespace qmx
