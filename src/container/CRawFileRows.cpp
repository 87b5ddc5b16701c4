#include "container/CRawFileRows.h"

#include <cassert>

#include "bitstream/Throwing.h"

namespace qmx {

CRawFileRows::CRawFileRows(const TKHeader& header, FilePtr rawFile)
    : file(std::move(rawFile)),
      start(placeToReturn(file.get())),
      rowBytes(header.rawRowBytes()),
      bytes(std::make_unique_for_overwrite<unsigned char[]>(start < 0 ? header.rawBytes()
                                                                      : rowBytes)) {}

unsigned char* CRawFileRows::placeOf(int r) const {
    return start < 0 ? bytes.get() + static_cast<std::size_t>(r) * rowBytes : bytes.get();
}

const unsigned char* CRawFileRows::row(int r) {
    assert(r == 0 || r == rowsAsked);
    rowsAsked = r + 1;
    if (start < 0 && r < rowsRead) return placeOf(r);
    if (r == 0 && rowsRead != 0) returnTo(file.get(), start);
    if (std::fread(placeOf(r), 1, rowBytes, file.get()) < rowBytes) throwEndOfStream();
    rowsRead = r + 1;
    return placeOf(r);
}

}  // namespace qmx
