// Bodies of the decoding kernels, included once for each level. What a level defines before:
//   QMX_TARGET             attribute of every function
//   kRefillWindows         the parser, see WindowRefill.inl
//   kSteadyShare           one group in so many has new coefficients in the bit plane where groups usually begin
//   countOnes(mask)        number of set bits
//   deposit(bits, mask)    bit i of bits at the place of the i-th set bit of mask
//   Lanes<T>(top)          kGroupSize magnitudes below 2^(top + 1): shiftIn(mask, p) gives bit p to each, for all
//                          planes from top down to 0, store(out, negatives) gives them their signs and stores
//                          them, storeApart(evens, odds, ...) by turns to both
//
// Plain way: ask for each coefficient, from the top plane down, whether the n section's run is used up;
// where it is, read a sign and one bit of each u section below. Here the same is asked of 64
// coefficients at once: those that are not significant yet take the next bits of the section's window,
// in their order, which is what a deposit does; those that are significant take the next bits of the u
// section. A photograph of 8 bits at 4.9 bits per sample, ns per sample, 2026-11-21: one coefficient at
// a time 31.7, this 4.65 in plain C++, 2.15 with AVX2, 2.0 with AVX-512.

/// Returns: 64 bits of a bitmap from any bit on.
QMX_TARGET inline std::uint64_t bitsAt(const unsigned char* bytes, std::uint64_t bit) {
    const unsigned char* place = bytes + bit / 64 * 8;
    return (loadWord(place) >> bit % 64) | (loadWord(place + 8) << 1 << ~bit % 64);
}

/// Returns: the next bits of a u section, count of which belong to it. Requires: kLoadBits stand in memory.
QMX_TARGET inline std::uint64_t takeLoadedRefinement(RefinementBits& bits, std::uint64_t count) {
    const std::uint64_t next = bits.span.next;
    const unsigned char* place = bits.span.bytes + next / 8;
    bits.span.next = next + count;
    return (loadWord(place) >> next % 8) | (std::uint64_t{place[8]} << 1 << (63 - next % 8));
}

/// The same, wherever the bits stand.
QMX_TARGET inline std::uint64_t takeRefinement(RefinementBits& bits, int count) {
    if (bits.span.next + kLoadBits > bits.span.end) return readRefinementLiterally(bits, count);
    return takeLoadedRefinement(bits, static_cast<unsigned>(count));
}

/// What is known of a group while its bit planes are read: one bit for each coefficient.
struct GroupState {
    std::uint64_t valid;
    int count;
    std::uint64_t significant = 0;
    int significantCount = 0;
    std::uint64_t negatives = 0;
};

/// Returns: the newly significant coefficients of a bit plane; notes their signs.
QMX_TARGET inline std::uint64_t takeFresh(SectionWindow& w, GroupState& group) {
    const std::uint64_t candidates = ~group.significant & group.valid;
    const std::uint64_t fresh = deposit(bitsAt(w.fresh, w.taken), candidates);
    group.negatives |= deposit(bitsAt(w.negatives, w.taken), candidates);
    w.taken += static_cast<unsigned>(group.count - group.significantCount);
    group.significant |= fresh;
    group.significantCount = countOnes(group.significant);
    return fresh;
}

/// The refinement pass of a bit plane. Returns: its bits in the coefficients that are significant above.
QMX_TARGET inline std::uint64_t refine(RefinementBits& bits, const GroupState& group) {
    return deposit(takeRefinement(bits, group.significantCount), group.significant);
}

/// Returns: how many of the next groups of a window have a new coefficient, or about so many.
QMX_TARGET inline std::uint32_t countLive(const SectionWindow& w, std::uint32_t groups) {
    // From the byte on that has the next candidate. The last word is the rest of the last group.
    const unsigned char* word = w.fresh + w.taken / 8;
    std::uint32_t live = 0;
    for (std::uint32_t i = 0; i <= groups; ++i, word += kWordBytes)
        live += loadWord(word) != 0 ? 1U : 0U;
    return live;
}

/// Fills the windows, and looks for the bit planes that the next groups begin at.
template <class T>
QMX_TARGET void refillOrder(OrderWindows<T>& s) {
    for (int p = s.liveTop + 1; p <= s.highest; ++p)
        s.windows[p].taken += s.takenAbove;
    s.takenAbove = 0;
    s.groupsLoaded = 0;
    s.groupsReady = kRefillWindows(s.windows + s.lowest, s.windows + s.highest, s.capacity);
    s.liveTop = s.lowest - 1;
    for (int p = s.usualTop = s.highest; p >= s.lowest; s.usualTop = --p) {
        const std::uint32_t live = countLive(s.windows[p], s.groupsReady);
        if (live != 0) s.liveTop = std::max(s.liveTop, p);
        if (live * kSteadyShare > s.groupsReady) break;
    }
}

/// Passes over bit planes in which no coefficient of a group becomes significant. Returns: where the group
/// begins; -1 when it is empty.
///
/// Plain way: ask each bit plane from the highest down. Those above the live ones are not even asked before the
/// next refill: what is taken from them is added up. At the usual one a group begins also if nothing is new
/// there, which changes nothing: so most groups begin at the same one, which processors foresee. 0.97 of the time
/// of photographs of 8 bits (2026-11-22).
template <class T>
QMX_TARGET inline int skipEmptyPlanes(OrderWindows<T>& s, const GroupState& group) {
    s.takenAbove += static_cast<unsigned>(group.count);
    for (int p = s.liveTop; p > s.usualTop; --p) {
        SectionWindow& w = s.windows[p];
        if ((bitsAt(w.fresh, w.taken) & group.valid) != 0) return p;
        w.taken += static_cast<unsigned>(group.count);
    }
    return s.usualTop >= s.lowest ? s.usualTop : -1;
}

/// Returns: groups for which the bits of all u sections stand in memory, if all sections have come.
template <class T>
QMX_TARGET std::uint64_t countLoaded(const OrderWindows<T>& s) {
    if (s.lowest != 0 || s.unrefined >= 0) return 0;
    std::uint64_t groups = ~std::uint64_t{0};
    for (int p = 0; p < s.liveTop; ++p) {
        const BitSpan& span = s.refinements[p].span;
        if (span.next + kLoadBits > span.end) return 0;
        groups = std::min(groups, (span.end - span.next - kLoadBits) / kGroupSize);
    }
    return groups;
}

/// Decodes a group of which all sections have come and stand in memory, from bit plane `top` down. Without
/// a call among them, masks and lanes stay in registers.
template <class T>
QMX_TARGET inline GroupState decodeLoaded(OrderWindows<T>& s, int top, GroupState group,
                                          Lanes<T>& lanes) {
    lanes.shiftIn(takeFresh(s.windows[top], group), top);
    for (int p = top - 1; p >= 0; --p) {
        const std::uint64_t bits =
            takeLoadedRefinement(s.refinements[p], static_cast<unsigned>(group.significantCount));
        const std::uint64_t refined = deposit(bits, group.significant);
        lanes.shiftIn(refined | takeFresh(s.windows[p], group), p);
    }
    return group;
}

/// The same for any sections.
///
/// Rounding, as masks: the bit below the planes that are refined is set in all coefficients that became
/// significant above; those that do in the planes below have a bit set two planes further down.
template <class T>
QMX_TARGET GroupState decodeAny(OrderWindows<T>& s, int top, GroupState group, Lanes<T>& lanes) {
    std::uint64_t planes[kTableBitPlanes<T>] = {};
    std::uint64_t newAbove = 0;
    for (int p = top; p >= std::min(s.lowest, s.unrefined + 1); --p) {
        if (p > s.unrefined && group.significant != 0) planes[p] |= refine(s.refinements[p], group);
        if (p < s.lowest) continue;
        const std::uint64_t fresh = takeFresh(s.windows[p], group);
        planes[p] |= fresh;
        if (p > s.unrefined + 1) {
            newAbove |= fresh;
        } else if (p >= 2) {
            planes[p - 2] |= fresh;
        }
    }
    if (s.unrefined >= 1) planes[s.unrefined - 1] |= newAbove;
    for (int p = top; p >= 0; --p)
        lanes.shiftIn(planes[p], p);
    return group;
}

/// Where the coefficients of a line go: all to `all`, or where odds is not null its even ones there.
template <class T>
struct LinePlace {
    T* all;
    T* odds;

    /// Sets the next count coefficients to 0.
    QMX_TARGET void clear(int count) const {
        if (odds == nullptr) {
            std::fill_n(all, count, T{0});
            return;
        }
        std::fill_n(all, (count + 1) / 2, T{0});
        std::fill_n(odds, count / 2, T{0});
    }
    /// Passes over a group.
    QMX_TARGET void advance() {
        all += odds == nullptr ? kGroupSize : kGroupSize / 2;
        if (odds != nullptr) odds += kGroupSize / 2;
    }
};

/// Stores the first count coefficients.
template <class T>
QMX_TARGET void storeSome(const Lanes<T>& lanes, std::uint64_t negatives, const LinePlace<T>& place,
                          int count) {
    T all[kGroupSize];
    lanes.store(all, negatives);
    if (place.odds == nullptr) {
        std::copy_n(all, count, place.all);
        return;
    }
    for (int i = 0; i < count; ++i)
        (i % 2 == 0 ? place.all : place.odds)[i / 2] = all[i];
}

/// Decodes the next group of a line, which has left coefficients left.
template <class T>
QMX_TARGET inline void decodeGroup(OrderWindows<T>& s, const LinePlace<T>& place, int left) {
    const int count = std::min(left, kGroupSize);
    GroupState group{~std::uint64_t{0} >> (kGroupSize - count), count};
    const int top = skipEmptyPlanes(s, group);
    if (top < 0) return place.clear(count);
    Lanes<T> lanes(top);
    if (s.groupsLoaded == 0) s.groupsLoaded = countLoaded(s);
    if (s.groupsLoaded != 0) {
        --s.groupsLoaded;
        group = decodeLoaded(s, top, group, lanes);
    } else {
        group = decodeAny(s, top, group, lanes);
    }
    if (count < kGroupSize) {
        storeSome(lanes, group.negatives, place, count);
    } else if (place.odds == nullptr) {
        lanes.store(place.all, group.negatives);
    } else {
        lanes.storeApart(place.all, place.odds, group.negatives);
    }
}

template <class T>
QMX_TARGET void decodeLine(OrderWindows<T>& s, T* line, T* odds, int coefficients) {
    LinePlace<T> place{line, odds};
    if (s.highest < s.lowest) return place.clear(coefficients);
    for (int left = coefficients; left > 0; left -= kGroupSize) {
        if (s.groupsReady == 0) refillOrder(s);
        --s.groupsReady;
        decodeGroup(s, place, left);
        place.advance();
    }
}

template <class T>
constexpr DecodeKernels<T> kTable{decodeLine<T>};
