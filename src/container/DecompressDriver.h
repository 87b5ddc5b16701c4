#pragma once

#include <cstdio>

#include "container/FileIo.h"
#include "container/TKHeader.h"

namespace qmx {

/// Decompresses the coefficient stream behind a header into a raw image file. Prints its progress on
/// standard output.
///
///  - in: the stream file, positioned behind the header; closed here. It is copied into a temporary
///    file first if it cannot seek.
///  - out: the raw file; closed here.
///  - staged: read the whole stream and write the whole image at once; else go through a window of
///    4096 bytes and row by row. The two give the same image for every stream.
///  - rowOrSections: above 0, reads that many sections at most; below 0, suspends the decoder behind row
///    -rowOrSections, see Suspension.h.
///
/// Requires: T are the coefficients of header in files.
/// Returns: 0; 1 when the stream is invalid, out is then empty.
/// Throws: 3 when a row cannot be written and staged is false; FileError; std::bad_alloc.
template <class T>
int decompress(TKHeader header, std::FILE* in, std::FILE* out, bool staged, int rowOrSections);

extern template int decompress<short>(TKHeader, std::FILE*, std::FILE*, bool, int);
extern template int decompress<int>(TKHeader, std::FILE*, std::FILE*, bool, int);

}  // namespace qmx
