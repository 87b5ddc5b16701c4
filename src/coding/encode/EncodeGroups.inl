// The coefficient encoder by groups. Parameters: QMX_TARGET (function attribute), and
//  - unionOf(folded), the union of 64 folded values, of which those that wrapped count as 0;
//  - Slices<T>, made from the same values and their union, which is not 0: plane(i), for every i up to the
//    highest bit of the union, is a word whose bits are the bits i of the values;
//  - countOnes(bits);
//  - extract(bits, mask), the bits that mask selects, moved together at the low end;
//  - takeNew(order, p, fresh, above, negative), which codes or keeps back the newly significant
//    coefficients of bit plane p, `fresh`, at least one, and counts them.

/// Codes one group, whose values have the union `any`, not 0; does not count it.
///
/// Plain way: OrderSections::encode for each coefficient. Sections of different bit planes are independent,
/// and within a section the coefficients keep their order, so the bits of 64 coefficients can go in
/// together: the refinement pass takes what extract leaves of the plane's bits, and what is newly
/// significant among the candidates are the events of the significance pass. From 14.2 ns per sample of an
/// 8-bit photograph, 2.95 bits per sample, to 8.4 without vectors and 1.9 with AVX2 (2026-11-21).
template <class T>
QMX_TARGET void encodeGroup(OrderSections& order, const T* folded, std::uint32_t any) {
    const Slices<T> slices(folded, any);
    const std::uint64_t negative = slices.plane(0);
    std::uint64_t above = 0;
    for (int p = bitLength(any) - 2; p >= 0; --p) {
        PlaneSections& sections = order.bitPlanes[p];
        const std::uint64_t plane = slices.plane(p + 1);
        const auto known = countOnes(above);
        if (above != 0) {
            order.makeRoomForBits(p);
            sections.refinement.append(extract(plane, above), known);
        }
        const std::uint64_t fresh = plane & ~above;
        if (fresh != 0) takeNew(order, p, fresh, above, negative);
        sections.excluded += known;
        above |= plane;
    }
}

/// Plain way: each group by itself. But all work on a group waits for its union, the end of a long
/// dependency chain. Unions 8 groups ahead hide that chain behind the work on other groups: from 1.29 to
/// 1.19 ns per sample of compression with AVX-512 (2026-11-21).
template <class T>
QMX_TARGET void encodeGroups(OrderSections& order, const T* folded, std::size_t count) {
    constexpr std::size_t kGroupsAhead = 8;
    std::uint32_t unions[kGroupsAhead];
    for (std::size_t first = 0; first < count; first += kGroupsAhead * kGroupSize) {
        const std::size_t end = std::min(count, first + kGroupsAhead * kGroupSize);
        std::uint32_t* any = unions;
        for (std::size_t i = first; i < end; i += kGroupSize)
            *any++ = unionOf(folded + i);
        any = unions;
        for (std::size_t i = first; i < end; i += kGroupSize, ++any) {
            if (*any != 0) encodeGroup(order, folded + i, *any);
            order.position += std::min<std::size_t>(kGroupSize, end - i);
        }
    }
}

/// The finish of kernels that keep nothing back.
[[maybe_unused]] inline void keptNothing(OrderSections&) {}
