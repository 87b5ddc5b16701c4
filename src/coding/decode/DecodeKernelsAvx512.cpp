#include <algorithm>

#include "coding/decode/DecodeKernels.h"
#include "coding/decode/WindowRefill.h"
#include "image/LanesAvx512.h"

namespace qmx {
namespace {

using avx512::Vec;

#include "coding/decode/DecodeKernelsSimd.inl"

}  // namespace

const KernelTables<DecodeKernels> kDecodeAvx512 = kTables;

}  // namespace qmx
