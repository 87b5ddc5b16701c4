#include "image/CpuLevel.h"

#ifdef QMX_X86

#include <limits>

#include "coding/encode/FoldKernels.h"
#include "image/LanesAvx2.h"

namespace qmx {
namespace {

using avx2::Vec;

#include "coding/encode/FoldKernelsSimd.inl"

}  // namespace

template <class T>
const FoldKernels<T> FoldKernels<T>::avx2 = kTable<T>;
template const FoldKernels<short> FoldKernels<short>::avx2;
template const FoldKernels<int> FoldKernels<int>::avx2;

}  // namespace qmx

#endif
