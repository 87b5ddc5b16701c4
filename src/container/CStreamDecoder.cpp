#include "container/CStreamDecoder.h"

namespace qmx {

template <class T>
CStreamDecoder<T>::CStreamDecoder(const StreamJob& streamJob)
    : job(streamJob),
      sections(shapeOf(job.header), job.memory, job.reduction),
      reader(job.stream, job.streamBytes) {}

template <class T>
int CStreamDecoder<T>::open() {
    const int result = sections.read(reader, 0, job.stop);
    if (!isUsable(result)) return result;
    // Reduced pictures leave the range of their samples even where the stream is complete.
    limit.emplace(limitOf<T>(job.reduction != 0 ? kCut : result, job.header));
    rows.emplace(sections, RowDecoding{0, job.stop});
    return result;
}

template <class T>
bool CStreamDecoder<T>::storeNext(unsigned char* out) {
    if (!rows->restoreRow()) return false;
    if (job.header.xSize != 0) storeRow(rows->rows(), 0, job.header.bytesPerPixel, *limit, out);
    return !job.stop.isSet();
}

template class CStreamDecoder<short>;
template class CStreamDecoder<int>;

}  // namespace qmx
