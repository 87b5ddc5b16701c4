#include <algorithm>
#include <cstring>

#include "coding/decode/DecodeKernels.h"
#include "coding/decode/RunLookUp.h"
#include "coding/decode/WindowRefill.h"
#include "image/LanesAvx2.h"

namespace qmx {
namespace {

using avx2::Vec;

#include "coding/decode/DecodeKernelsSimd.inl"
#include "coding/decode/WindowRefill.inl"

}  // namespace

std::uint32_t refillWindowsAvx2(SectionWindow* first, SectionWindow* last, std::uint32_t capacity) {
    return refill(first, last, capacity);
}

const KernelTables<DecodeKernels> kDecodeAvx2 = kTables;

}  // namespace qmx
