#include "info/CheckStream.h"

#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "container/CoefficientDispatch.h"
#include "container/ImageJob.h"
#include "container/MemoryPolicy.h"

namespace qmx {
namespace {

/// Wants all rows, and drops them.
template <class T>
class CNoRows final : public IRowSink<T> {
public:
    bool take(const CImageData<T>&, int, int) override { return true; }
};

template <class T>
StreamEnd decodeWith(const CStreamFile& file) {
    requireMemoryForPlanes<T>(file.getHeader());
    CReceivedSections<T> sections(shapeOf(file.getHeader()), std::pmr::new_delete_resource());
    CBitFileReader bits = file.bits();
    const int result = sections.read(bits);
    file.checkReads();
    if (!isUsable(result)) return StreamEnd::invalid;
    CNoRows<T> rows;
    decodeRows(sections, rows);
    file.checkReads();
    return result == kCut ? StreamEnd::cut : StreamEnd::complete;
}

}  // namespace

StreamEnd decodeStream(const CStreamFile& file) {
    return dispatchCoefficients(
        file.getHeader(), MostBitsOfShort::inFiles, [&]<class T>() { return decodeWith<T>(file); },
        [] { return StreamEnd::invalid; });
}

void checkStream(const CStreamFile& file, StreamReport& report) {
    report.end = decodeStream(file);
    if (report.trailer) report.checksum = checksumOf(file, *report.trailer);
}

}  // namespace qmx
