#include "coding/encode/FoldKernels.h"

#include "coding/syntax/FoldedValue.h"

namespace qmx {
namespace {

template <class T>
void foldRow(const T* row, std::size_t count, T* folded, FoldedUnion<T>& all) {
    T bits = 0;  // local copy: the stores into folded may alias all.bits
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
void splitRow(const T* row, std::size_t count, T* evens, T* odds) {
    for (std::size_t i = 0; i < count; ++i) {
        odds[i] = row[2 * i + 1];
        evens[i] = row[2 * i];
    }
}

template <class T>
constexpr FoldKernels<T> kTable{foldRow<T>, splitRow<T>};

}  // namespace

template <class T>
const FoldKernels<T> FoldKernels<T>::scalar = kTable<T>;
template const FoldKernels<short> FoldKernels<short>::scalar;
template const FoldKernels<int> FoldKernels<int>::scalar;

}  // namespace qmx
