#include "image/CpuLevel.h"

#ifdef QMX_X86

#include <limits>

#include "coding/encode/FoldKernels.h"
#include "image/LanesAvx512.h"

namespace qmx {
namespace {

using avx512::Vec;

#include "coding/encode/FoldKernelsSimd.inl"

}  // namespace

template <class T>
const FoldKernels<T> FoldKernels<T>::avx512 = kTable<T>;
template const FoldKernels<short> FoldKernels<short>::avx512;
template const FoldKernels<int> FoldKernels<int>::avx512;

}  // namespace qmx

#endif
