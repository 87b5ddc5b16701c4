// What both vector levels give EncodeGroups.inl, for the files EncodeKernels<level>.cpp. Requires before it:
// the Vec of the level, with QMX_TARGET.

QMX_TARGET inline std::uint64_t extract(std::uint64_t bits, std::uint64_t mask) {
    return _pext_u64(bits, mask);
}

QMX_TARGET inline std::uint64_t countOnes(std::uint64_t bits) {
    return static_cast<std::uint64_t>(_mm_popcnt_u64(bits));
}

template <class T>
constexpr std::size_t kVectors = kGroupSize / Vec<T>::kSamples;

/// Returns: a vector of a group, with 0 in place of folded values that wrapped.
template <class T>
QMX_TARGET inline typename Vec<T>::Lanes positive(const T* folded, std::size_t vector) {
    using V = Vec<T>;
    return V::greatest(V::load(folded + vector * V::kSamples), V::zero());
}

template <class T>
QMX_TARGET inline std::uint32_t unionOf(const T* folded) {
    using V = Vec<T>;
    auto all = V::zero();
    for (std::size_t i = 0; i < kVectors<T>; ++i)
        all = V::either(all, positive(folded, i));
    return V::unionOf(all);
}
