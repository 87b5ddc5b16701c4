#pragma once

#include <cstdio>

#include "container/Loss.h"
#include "container/TKHeader.h"

namespace qmx {

/// Compresses a raw image file into the coefficient stream behind a header. Prints its progress on
/// standard output.
///
///  - in: the raw file at its start; closed here.
///  - out: the stream file, positioned behind the 16 header bytes that the caller has written;
///    closed here.
///  - rate: the budget as a multiple of the raw size, 0 for 1.5; when staged is false, nothing is cut, but
///    the report says less of what a rate asked for.
///  - staged: build the stream in memory and cut it at the budget; else send it, complete, through a
///    buffer of 4096 bytes to the file.
///  - rowOrSections: below 0, suspends the encoder behind row -rowOrSections, see Suspension.h.
///
/// Requires: T are the coefficients of header in files.
/// Returns: what the stream loses that no rate asked for.
/// Throws: 3 when the raw file is too short and staged is false; FileError; std::bad_alloc. Ends the
/// process when staged is false and the file does not even take the last bytes of the stream.
template <class T>
LossReport compress(TKHeader header, std::FILE* in, std::FILE* out, double rate, bool staged,
                    int rowOrSections);

extern template LossReport compress<short>(TKHeader, std::FILE*, std::FILE*, double, bool, int);
extern template LossReport compress<int>(TKHeader, std::FILE*, std::FILE*, double, bool, int);

}  // namespace qmx
