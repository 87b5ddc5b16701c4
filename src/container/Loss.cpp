#include "container/Loss.h"

#include <algorithm>

#include "wavelet/LevelGeometry.h"

namespace qmx {
namespace {

std::uint64_t countOf(const CodedFacts& facts, Loss loss) {
    switch (loss) {
        case Loss::wrappedCoefficient:
            return facts.lostCoefficients;
        case Loss::endlessRun:
            return facts.endlessSections;
        case Loss::overlongSection:
            return facts.overlongSections;
        default:
            return 0;
    }
}

/// Returns: whether a reason needs no comparison.
bool isCertain(Loss loss) {
    return loss == Loss::none || loss == Loss::wrappedCoefficient || loss == Loss::endlessRun;
}

bool isCut(const CodedFacts& facts, const StreamFate& fate) {
    return fate.stream.sizeBytes < facts.streamBytes();
}

bool isRestored(const ImageJob& job, MostBitsOfShort profile, const CodedFacts& facts,
                const StreamFate& fate) {
    if (fate.isFalseEndLoss && !endsAtItsEnd(job.header, fate.stream, facts.streamBits))
        return false;
    return decodeAndCompare(job, profile, fate.stream).isSame;
}

/// Returns: the reason alone.
std::string reasonOf(const LossReport& report) {
    const std::string count = std::to_string(report.count);
    const bool one = report.count == 1;
    switch (report.loss) {
        case Loss::none:
            return "it does restore it";
        case Loss::sideOfOne:
            return "an image with a side of 1 pixel has no coefficients";
        case Loss::thinImage:
            return "decoders filter the longer side of an image with a side of 2 or 3 pixels";
        case Loss::wrappedCoefficient:
            return count + (one ? " coefficient does" : " coefficients do") +
                   " not fit 16 bits: samples exceed the bits/pixel";
        case Loss::endlessRun:
            return count + (one ? " section covers" : " sections cover") +
                   " more coefficients than a run can pass over";
        case Loss::overlongSection:
            return count + (one ? " section is longer than its length field can say"
                                : " sections are longer than their length fields can say");
        case Loss::suspension:
            return "coding was suspended, and later colour planes lack their first rows";
        case Loss::cut:
            return "no rate was given, but the stream was cut at " +
                   std::to_string(report.streamBytes) + " of " +
                   std::to_string(report.completeBytes) + " bytes";
    }
    return "";
}

}  // namespace

Loss suspectLoss(const CodedFacts& facts, const TKHeader& header, const StreamFate& fate) {
    const int shorter = std::min(header.xSize, header.ySize);
    const int longer = std::max(header.xSize, header.ySize);
    if (shorter == 0) return Loss::none;
    if (shorter == 1) return Loss::sideOfOne;
    if (facts.lostCoefficients != 0) return Loss::wrappedCoefficient;
    if (facts.levels < 1 && longer >= kShortestLine) return Loss::thinImage;
    if (facts.endlessSections != 0) return Loss::endlessRun;
    if (facts.overlongSections != 0) return Loss::overlongSection;
    if (fate.wasSuspended) return Loss::suspension;
    return isCut(facts, fate) && !fate.isLossAskedFor ? Loss::cut : Loss::none;
}

bool hasDoubts(const CodedFacts& facts, const TKHeader& header, const StreamFate& fate) {
    return !isCertain(suspectLoss(facts, header, fate));
}

std::string describeLoss(const LossReport& report) {
    const bool isHopeless = report.loss == Loss::none || report.loss == Loss::sideOfOne;
    if (isHopeless) return reasonOf(report);
    const bool isDecoded = report.reading == Reading::whole || report.reading == Reading::part;
    return reasonOf(report) +
           (isDecoded ? "; the exact encode of the library (libtesk) restores the image"
                      : "; streams of the library (libtesk) open wherever they are cut");
}

LossReport findLoss(const ImageJob& job, MostBitsOfShort profile, const CodedFacts& facts,
                    const StreamFate& fate) {
    LossReport report;
    report.completeBytes = sizeof job.header + facts.streamBytes();
    report.streamBytes = sizeof job.header + fate.stream.sizeBytes;
    if (isCut(facts, fate) && fate.isLossAskedFor) {
        report.reading = readingOf(job.header, fate.stream);
        // Without padding alone a stream is complete for decoders.
        if (report.reading == Reading::part) return report;
        if (report.reading != Reading::whole) {
            report.loss = Loss::overlongSection;
            report.count = countOf(facts, report.loss);
            return report;
        }
    }
    report.loss = suspectLoss(facts, job.header, fate);
    report.count = countOf(facts, report.loss);
    if (isCertain(report.loss)) return report;
    if (isRestored(job, profile, facts, fate)) {
        report.loss = Loss::none;
    } else if (fate.isLossAskedFor && readingOf(job.header, fate.stream) == Reading::refused) {
        report.reading = Reading::refused;
    }
    return report;
}

}  // namespace qmx
