#include <limits>

#include "coding/encode/FoldKernels.h"
#include "image/LanesAvx2.h"

namespace qmx {
namespace {

using avx2::Vec;

#include "coding/encode/FoldKernelsSimd.inl"

}  // namespace

const KernelTables<FoldKernels> kFoldAvx2 = kTables;

}  // namespace qmx
