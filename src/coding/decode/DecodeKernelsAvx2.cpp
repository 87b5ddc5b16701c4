#include <algorithm>

#include "coding/decode/DecodeKernels.h"
#include "coding/decode/WindowRefill.h"
#include "image/LanesAvx2.h"

namespace qmx {
namespace {

using avx2::Vec;

#include "coding/decode/DecodeKernelsSimd.inl"

}  // namespace

const KernelTables<DecodeKernels> kDecodeAvx2 = kTables;

}  // namespace qmx
