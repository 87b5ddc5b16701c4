#pragma once

#include <string>

#include "coding/encode/CodedFacts.h"
#include "container/Comparison.h"

namespace qmx {

// Streams that lose what nobody asked for.
// Format: docs/format.md, 15 Images that do not come back.

/// Why an image does not come back, the one list that all others are made from.
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
    /// What was written behind the header; its bytes may be null where no comparison is needed.
    WrittenStream stream;
    bool wasSuspended = false;
    /// A budget leaves less than the complete stream takes: what it cuts off is no loss, as long as
    /// decoders come to the cut.
    bool isLossAskedFor = false;
    /// A complete stream whose end mark decoders do not come to counts as a loss, though it restores its
    /// image: with another end mark in the middle, a prefix would pass for the whole.
    bool isFalseEndLoss = false;
};

/// Returns: the first reason there is to doubt that a stream restores its image.
Loss suspectLoss(const CodedFacts& facts, const TKHeader& header, const StreamFate& fate);

/// Returns: whether findLoss will decode the stream and compare.
bool hasDoubts(const CodedFacts& facts, const TKHeader& header, const StreamFate& fate);

/// Finds out whether a stream restores its image. In most cases the encoder knows; where it has to doubt,
/// the stream is decoded, as decoders of the profile do, and compared. Requires: fate.stream has its bytes
/// if it was cut or there are doubts.
/// Throws: std::bad_alloc and what job.pixels throws, for images that have to be compared.
LossReport findLoss(const ImageJob& job, MostBitsOfShort profile, const CodedFacts& facts,
                    const StreamFate& fate);

}  // namespace qmx
