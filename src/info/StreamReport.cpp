#include "info/StreamReport.h"

#include <algorithm>

#include "container/CoefficientDispatch.h"
#include "info/CFirstPicture.h"

namespace qmx {
namespace {

/// Returns: the bytes of the file that bits behind the header take.
std::uint64_t bytesForStreamBits(std::uint64_t streamBits) {
    return byteOfStreamBit(streamBits + 7);
}

int coefficientBitsOf(const TKHeader& header) {
    return dispatchCoefficients(
        header, MostBitsOfShort::inFiles, []<class T>() { return static_cast<int>(8 * sizeof(T)); },
        [] { return 0; });
}

void describeTrailer(const CStreamFile& file, StreamReport& report) {
    if (report.end != StreamEnd::complete) return;
    const auto place = placeOfTrailer(file);
    report.hasStrayTrailer = place && *place != report.streamBytes;
    report.trailer = findTrailer(file, report.streamBytes);
}

}  // namespace

StreamReport describeStream(const CStreamFile& file) {
    StreamReport report;
    report.header = file.getHeader();
    report.fileBytes = file.sizeBytes();
    report.coefficientBits = coefficientBitsOf(report.header);
    const SectionBounds bounds = sectionBoundsOf(report.header);
    report.levels = bounds.levels;

    CBitFileReader bits = file.bits();
    CSectionWalk walk(bits, file.dataBits(), bounds);
    CFirstPicture firstPicture(bounds.planes, bounds.levels);
    std::uint64_t behindSections = walk.position();
    for (PlacedSection section; walk.next(section);) {
        ++report.sections;
        if (section.isEmpty()) ++report.emptySections;
        firstPicture.add(section);
        behindSections = section.endBit();
    }
    file.checkReads();

    report.topPlane = walk.topPlane();
    report.end = walk.end();
    report.endBit = walk.position();
    report.restBits = file.dataBits() - std::min(file.dataBits(), behindSections);
    report.streamBytes = report.fileBytes;
    if (report.end == StreamEnd::complete)
        report.streamBytes =
            std::min(report.fileBytes, bytesForStreamBits(report.endBit + kEndPaddingBits));
    if (const std::uint64_t bit = firstPicture.endBit(); bit != 0)
        report.firstPictureBytes = bytesForStreamBits(bit);
    describeTrailer(file, report);
    return report;
}

}  // namespace qmx
