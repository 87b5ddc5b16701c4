// Bodies of the decoding kernels, included once for each level. What a level defines before:
//   QMX_TARGET             attribute of every function
//   kRefillWindows         the parser, see WindowRefill.inl
//   kSteadyShare           one group in so many has new coefficients in the bit plane where groups usually begin
//   countOnes(mask)        number of set bits
//   deposit(bits, mask)    bit i of bits at the place of the i-th set bit of mask
//   Lanes<T>(top)          kGroupSize magnitudes below 2^(top + 1): shiftIn(mask, p) gives bit p to each, for all
//                          planes from top down to 0, store(out, negatives) gives them their signs and stores
//                          them, storeApart(evens, odds, ...) by turns to both
//   copyShort(from, n, to) copies up to kGroupSize coefficients
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

/// Returns: new candidates among the next `count` of a window.
QMX_TARGET inline std::uint64_t countFresh(const SectionWindow& w, std::uint64_t count) {
    std::uint64_t fresh = 0;
    std::uint64_t next = w.taken;
    for (; count >= kGroupSize; count -= kGroupSize, next += kGroupSize)
        fresh += static_cast<unsigned>(countOnes(bitsAt(w.fresh, next)));
    const std::uint64_t rest = bitsAt(w.fresh, next) & lowBits(static_cast<int>(count));
    return fresh + static_cast<unsigned>(countOnes(rest));
}

/// Returns: groups that can be taken from all windows before the next refill, at least 1. What is new in a bit
/// plane is no candidate below it: so it turns out which windows hold all candidates to come.
template <class T>
QMX_TARGET std::uint32_t countReady(OrderWindows<T>& s) {
    std::uint64_t left = s.left;
    std::uint64_t least = std::numeric_limits<std::uint32_t>::max();
    for (int p = s.highest; p >= s.lowest; --p) {
        SectionWindow& w = s.windows[p];
        if (w.filled - w.taken < left && w.nextNew < s.capacity) {
            // The section does not cover what it should, or nobody knows what it should.
            w.end = kNoEnd;
            kRefillWindows(&w, &w, s.capacity);
        }
        const std::uint64_t held = w.filled - w.taken;
        if (held < left)
            least = std::min(least, held / kGroupSize);
        else
            left -= countFresh(w, left);
    }
    return static_cast<std::uint32_t>(least);
}

/// Fills the windows, and looks for the bit planes that the next groups begin at.
template <class T>
QMX_TARGET void refillOrder(OrderWindows<T>& s) {
    for (int p = s.liveTop + 1; p <= s.highest; ++p)
        s.windows[p].taken += s.takenAbove;
    s.takenAbove = 0;
    s.groupsLoaded = 0;
    kRefillWindows(s.windows + s.lowest, s.windows + s.highest, s.capacity);
    s.groupsReady = countReady(s);
    s.liveTop = s.lowest - 1;
    for (int p = s.usualTop = s.highest; p >= s.lowest; s.usualTop = --p) {
        const SectionWindow& w = s.windows[p];
        const std::uint64_t held = (w.filled - w.taken) / kGroupSize + 1;
        const auto groups =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(s.groupsReady, held));
        const std::uint32_t live = countLive(w, groups);
        if (live != 0) s.liveTop = std::max(s.liveTop, p);
        if (live * kSteadyShare > groups) break;
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

/// Where the next coefficients of a line go: to `next`, or where `other` is not null to both by turns.
template <class T>
struct LinePlace {
    T* next;
    T* other;

    QMX_TARGET void advance(int count) {
        if (other == nullptr) {
            next += count;
            return;
        }
        next += (count + 1) / 2;
        other += count / 2;
        if (count % 2 != 0) std::swap(next, other);
    }
    /// Sets the next count coefficients to 0.
    QMX_TARGET void clear(int count) const {
        if (other == nullptr) {
            std::fill_n(next, count, T{0});
            return;
        }
        std::fill_n(next, (count + 1) / 2, T{0});
        std::fill_n(other, count / 2, T{0});
    }
    QMX_TARGET void store(const Lanes<T>& lanes, std::uint64_t negatives) const {
        if (other == nullptr)
            lanes.store(next, negatives);
        else
            lanes.storeApart(next, other, negatives);
    }
    /// Copies the next count coefficients that are held.
    QMX_TARGET void copyHeld(const OrderWindows<T>& s, int count) const {
        if (other == nullptr) return copyShort(s.held + s.heldFirst, count, next);
        const T* first = s.heldApart + s.heldFirst / 2;
        const T* second = first + kGroupSize / 2;
        if (s.heldFirst % 2 != 0) std::swap(++first, second);
        copyShort(first, (count + 1) / 2, next);
        copyShort(second, count / 2, other);
    }
};

/// In place of a line.
template <class T>
struct HeldPlace {
    OrderWindows<T>& order;

    QMX_TARGET void store(const Lanes<T>& lanes, std::uint64_t negatives) const {
        lanes.store(order.held, negatives);
        lanes.storeApart(order.heldApart, order.heldApart + kGroupSize / 2, negatives);
    }
};

/// Decodes the next group, of `count` coefficients. Returns: false, with nothing stored, when it begins at no bit plane:
/// all are 0.
template <class T, class Place>
QMX_TARGET inline bool decodeGroup(OrderWindows<T>& s, const Place& place, int count) {
    if (s.groupsReady == 0) refillOrder(s);
    --s.groupsReady;
    s.left -= static_cast<unsigned>(count);
    GroupState group{~std::uint64_t{0} >> (kGroupSize - count), count};
    const int top = skipEmptyPlanes(s, group);
    if (top < 0) return false;
    Lanes<T> lanes(top);
    if (s.groupsLoaded == 0) s.groupsLoaded = countLoaded(s);
    if (s.groupsLoaded != 0) {
        --s.groupsLoaded;
        group = decodeLoaded(s, top, group, lanes);
    } else {
        group = decodeAny(s, top, group, lanes);
    }
    place.store(lanes, group.negatives);
    return true;
}

/// Decodes a group of which lines to come have a part.
template <class T>
QMX_TARGET void holdGroup(OrderWindows<T>& s) {
    s.heldFirst = 0;
    s.heldCount = static_cast<int>(std::clamp<std::uint64_t>(s.left, 1, kGroupSize));
    s.heldIsEmpty = !decodeGroup(s, HeldPlace<T>{s}, s.heldCount);
}

/// Plain way: groups of each line, the last one with what is left. But of a picture of 64 columns that would be
/// twice as many, of 16 columns five times. Here a group goes on in the next line of the order.
template <class T>
QMX_TARGET void decodeLine(OrderWindows<T>& s, T* line, T* odds, int coefficients) {
    LinePlace<T> place{line, odds};
    if (s.highest < s.lowest) return place.clear(coefficients);
    for (int left = coefficients; left > 0;) {
        int count = kGroupSize;
        if (s.heldCount == 0 && left >= kGroupSize) {
            if (!decodeGroup(s, place, count)) place.clear(count);
        } else {
            if (s.heldCount == 0) holdGroup(s);
            count = std::min(left, s.heldCount);
            if (s.heldIsEmpty)
                place.clear(count);
            else
                place.copyHeld(s, count);
            s.heldFirst += count;
            s.heldCount -= count;
        }
        left -= count;
        place.advance(count);
    }
}

template <class T>
constexpr DecodeKernels<T> kTable{decodeLine<T>};
