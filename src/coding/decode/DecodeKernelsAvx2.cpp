#include "image/CpuLevel.h"

#ifdef QMX_X86

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

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

void refillWindowsAvx2(SectionWindow* first, SectionWindow* last, std::uint32_t capacity) {
    refill(first, last, capacity);
}

template <class T>
const DecodeKernels<T> DecodeKernels<T>::avx2 = kTable<T>;
template const DecodeKernels<short> DecodeKernels<short>::avx2;
template const DecodeKernels<int> DecodeKernels<int>::avx2;

}  // namespace qmx

#endif
