#pragma once

#include "convert/ImageFile.h"

namespace qmx {

/// Reads arrays of NumPy: uint8 (rows, columns) and (rows, columns, 3), uint16 (rows, columns) in either
/// byte order, in C and in Fortran order. Requires: the file begins with kNpyMagic.
/// Throws: Refusal, std::bad_alloc.
ImageFile readNpy(Buffer file, const ReadOptions& options);

inline constexpr char kNpyMagic[] = "\x93NUMPY";

}  // namespace qmx
