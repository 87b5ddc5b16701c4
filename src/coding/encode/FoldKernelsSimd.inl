// The fold kernels on vectors, for the files FoldKernels<level>.cpp. Requires before it: the Vec of the
// level, with QMX_TARGET. Whole vectors go here. What is left of a row goes through a mask, or to the plain
// kernels where there are none.

/// What the vectors of a row have shown.
template <class T>
struct Found {
    typename Vec<T>::Lanes bits;
    std::uint64_t lost;
};

/// Plain way: fold(x) = 2 |x| + (x < 0), in wrapping lanes. The folded value is below 2 without x being 0
/// where 2 |x| has wrapped: where one of the two highest bits of |x| is set.
template <class T>
QMX_TARGET inline typename Vec<T>::Lanes foldLanes(typename Vec<T>::Lanes x, Found<T>& found) {
    using V = Vec<T>;
    const auto magnitudes = V::magnitudes(x);
    const auto folded = V::sub(V::add(magnitudes, magnitudes), V::signs(x));
    found.bits = V::either(found.bits, folded);
    const auto highest = V::all(std::numeric_limits<T>::min() / 2);
    if (V::hasAny(magnitudes, highest)) [[unlikely]]
        found.lost += V::kSamples - V::countZeros(V::both(magnitudes, highest));
    return folded;
}

template <class T>
QMX_TARGET void foldRow(const T* row, std::size_t count, T* out, FoldedUnion<T>& all) {
    using V = Vec<T>;
    Found<T> found{V::zero(), 0};
    std::size_t i = 0;
    for (; i + V::kSamples <= count; i += V::kSamples)
        V::store(out + i, foldLanes<T>(V::load(row + i), found));
    if constexpr (V::kHasMasks)
        V::storeFirst(out + i, foldLanes<T>(V::loadFirst(row + i, count - i), found), count - i);
    else
        FoldKernels<T>::scalar.fold(row + i, count - i, out + i, all);
    all.bits = static_cast<T>(all.bits | static_cast<T>(V::unionOf(found.bits)));
    all.lost += found.lost;
}

template <class T>
QMX_TARGET void splitRow(const T* row, std::size_t count, T* evens, T* odds) {
    using V = Vec<T>;
    std::size_t i = 0;
    for (; i + V::kSamples <= count; i += V::kSamples) {
        const auto first = V::load(row + 2 * i);
        const auto second = V::load(row + 2 * i + V::kSamples);
        V::store(evens + i, V::evensOf(first, second));
        V::store(odds + i, V::oddsOf(first, second));
    }
    FoldKernels<T>::scalar.split(row + 2 * i, count - i, evens + i, odds + i);
}

template <class T>
constexpr FoldKernels<T> kTable{foldRow<T>, splitRow<T>};
