#include "coding/encode/FoldKernels.h"

#include <type_traits>

#include "coding/syntax/FoldedValue.h"

namespace qmx {
namespace {

template <class T>
void foldRow(const T* row, std::size_t count, T* folded, FoldedUnion<T>& all) {
    T bits = 0;  // a local one: all might stand in folded, for all that the compiler knows
    unsigned lost = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const T value = fold(row[i]);
        lost += static_cast<unsigned>(value < 2) & static_cast<unsigned>(row[i] != 0);
        folded[i] = value;
        bits = static_cast<T>(bits | value);
    }
    all.bits = static_cast<T>(all.bits | bits);
    all.lost += lost;
}

template <class T>
void splitRow(const T* row, std::size_t pairs, T* even, T* odd) {
    for (std::size_t i = 0; i < pairs; ++i) {
        odd[i] = row[2 * i + 1];
        even[i] = row[2 * i];
    }
}

template <class T>
constexpr FoldKernels<T> kFoldScalar{foldRow<T>, splitRow<T>};

}  // namespace

template <class T>
const FoldKernels<T>& foldKernels(CpuLevel level) {
    if constexpr (std::is_same_v<T, short>) {
        if (level >= CpuLevel::avx512) return kFoldShortAvx512;
        if (level >= CpuLevel::avx2) return kFoldShortAvx2;
    } else {
        if (level >= CpuLevel::avx512) return kFoldIntAvx512;
        if (level >= CpuLevel::avx2) return kFoldIntAvx2;
    }
    return kFoldScalar<T>;
}

template const FoldKernels<short>& foldKernels(CpuLevel);
template const FoldKernels<int>& foldKernels(CpuLevel);

}  // namespace qmx
