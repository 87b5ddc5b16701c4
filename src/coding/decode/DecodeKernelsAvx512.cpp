#include "image/CpuLevel.h"

#ifdef QMX_X86

#include <algorithm>
#include <limits>
#include <utility>

#include "coding/decode/DecodeKernels.h"
#include "coding/decode/WindowRefill.h"
#include "image/LanesAvx512.h"

namespace qmx {
namespace {

using avx512::Vec;

#include "coding/decode/DecodeKernelsSimd.inl"

}  // namespace

template <class T>
const DecodeKernels<T> DecodeKernels<T>::avx512 = kTable<T>;
template const DecodeKernels<short> DecodeKernels<short>::avx512;
template const DecodeKernels<int> DecodeKernels<int>::avx512;

}  // namespace qmx

#endif
