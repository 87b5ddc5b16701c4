#include <limits>

#include "coding/encode/FoldKernels.h"
#include "image/LanesAvx512.h"

namespace qmx {
namespace {

using avx512::Vec;

#include "coding/encode/FoldKernelsSimd.inl"

}  // namespace

const KernelTables<FoldKernels> kFoldAvx512 = kTables;

}  // namespace qmx
