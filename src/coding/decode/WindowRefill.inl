// Parsing of n sections into their windows, included once for each level. QMX_TARGET is the attribute of
// every function. All levels leave the same state. Format: docs/format.md, 10.2 n section and 11 Run code.

/// Where a window is being filled. In both bitmaps zeros stand behind the candidate `next`, whose own bits may
/// be set already: they would be set to the same.
struct Filling {
    unsigned char* newBytes;
    unsigned char* negativeBytes;
    std::uint64_t next;
};

QMX_TARGET inline Filling fillingOf(const SectionWindow& w) {
    return {w.fresh, w.negatives, w.nextNew};
}

/// Appends count candidates. Their bits, and that of the one behind them, stand in the low 57 bits.
QMX_TARGET inline void append(Filling& f, std::uint64_t fresh, std::uint64_t negatives,
                              std::uint64_t count) {
    unsigned char* const newPlace = f.newBytes + f.next / 8;
    unsigned char* const negativePlace = f.negativeBytes + f.next / 8;
    const unsigned bit = f.next % 8;
    storeWord(newPlace, *newPlace | fresh << bit);
    storeWord(negativePlace, *negativePlace | negatives << bit);
    f.next += count;
}

/// Appends a new candidate and a run of zeros of any length.
QMX_TARGET inline void appendRun(Filling& f, std::uint64_t negative, std::uint64_t run) {
    const unsigned bit = f.next % 8;
    f.newBytes[f.next / 8] |= static_cast<unsigned char>(1U << bit);
    f.negativeBytes[f.next / 8] |= static_cast<unsigned char>(negative << bit);
    f.next += run + 1;
}

/// Moves the candidates that have not been taken to the window's start and clears what follows.
QMX_TARGET inline void makeRoom(SectionWindow& w, std::uint64_t capacity) {
    const std::uint64_t bytes = w.taken / 8;
    const auto kept = static_cast<std::size_t>(w.filled / 8 + 1 - bytes);
    std::memmove(w.fresh, w.fresh + bytes, kept);
    std::memmove(w.negatives, w.negatives + bytes, kept);
    // The last store, of 8 bytes, begins in front of the capacity.
    const auto behind = static_cast<std::size_t>(capacity / 8 + 2 * std::size_t{kWordBytes} - kept);
    std::memset(w.fresh + kept, 0, behind);
    std::memset(w.negatives + kept, 0, behind);
    w.taken -= 8 * bytes;
    w.nextNew -= 8 * bytes;
    w.filled = std::min(w.nextNew, capacity + kGroupSize);
}

/// A window that is being filled from memory.
struct Parsing {
    SectionWindow* window;
    Filling filling;
    BitSpan span;
    /// The next signed run is left to the decoder.
    bool stuck;
};

QMX_TARGET inline void open(Parsing& p, SectionWindow& w) {
    p.window = &w;
    p.filling = fillingOf(w);
    p.span = w.decoder->source()->loadedBits();
    // Bits in front of the end are parsed; loads may reach behind it.
    p.span.end = std::min(p.span.end, w.end + kLoadBits - 1);
    p.stuck = false;
}

QMX_TARGET inline void close(Parsing& p) {
    if (p.span.end != 0) p.window->decoder->source()->goOnAt(p.span.next);
    p.window->nextNew = p.filling.next;
}

QMX_TARGET inline bool canGoOn(const Filling& f, const BitSpan& span, std::uint64_t capacity) {
    return f.next < capacity && span.next + kLoadBits <= span.end;
}

/// Bits that a load from any bit on has at least.
inline constexpr int kLoadedBits = 57;

/// Returns: the next bits of a span, kLoadedBits of them.
QMX_TARGET inline std::uint64_t nextBits(const BitSpan& span) {
    return loadWord(span.bytes + span.next / 8) >> (span.next % 8);
}

/// Signed runs that have been looked up: what bits are left, and their candidates.
struct LookedUp {
    std::uint64_t bits;
    std::uint64_t patterns = 0;
    std::uint64_t count = 0;
};

/// Passes over the whole signed runs in the next bits.
QMX_TARGET inline void lookUp(LookedUp& runs) {
    const auto window = static_cast<std::size_t>(runs.bits % RunLookUps::kEntries);
    runs.patterns |= kRunLookUps.patterns[window] << runs.count;
    runs.count += kRunLookUps.candidates[window];
    runs.bits >>= kRunLookUps.bits[window];
}

/// The same, and over the signed run behind them, if all but its suffix stands in these bits. Returns:
/// false when nothing was passed.
QMX_TARGET inline bool lookUpExtended(LookedUp& runs) {
    const auto window = static_cast<std::size_t>(runs.bits % RunLookUps::kEntries);
    runs.patterns |= kRunLookUps.patterns[window] << runs.count;
    const RunLookUps::Extended& entry = kRunLookUps.extended[window];
    const std::uint64_t rest = runs.bits >> entry.bits;
    runs.count += entry.candidates + (rest & lowBits(entry.suffixBits));
    runs.bits = rest >> entry.suffixBits;
    return entry.bits != 0;
}

/// Appends the signed runs in the next bits of N streams, of which 57 are loaded, up to one that
/// no look-up passes: `stalled` says where the last one met such a one.
///
/// Plain way: read a sign, count zeros, read the suffix, and store one bit for the candidate. Here
/// each look-up passes over all signed runs that stand in 11 bits, and the last one over a run of up to 511
/// besides, without a branch: runs are seldom longer. The candidate behind what a look-up has passed is
/// new; it says so, with the sign if it has seen it, and the next one, or whoever takes it, sets the same bits
/// again. A one above the bits that are left moves down with them and so counts what was consumed.
///
/// One look-up waits for the one before; those of other streams fill the time: 3.2 ns per sample with
/// one stream, 2.7 with two, 2.5 with three, 2.8 with four (8 bits at 4.9 bits per sample, 2026-11-21).
template <std::size_t N>
QMX_TARGET inline void appendRuns(Filling* fillings, BitSpan* spans, bool* stalled) {
    // Four look-ups and the suffix of the last one stand in what was loaded; the patterns, which end with the open
    // candidate, in a store behind up to 7 other bits; those of two look-ups in half a word.
    static_assert(4 * kLookUpBits + kMostSuffixBits <= kLoadedBits);
    static_assert(7 + 4 * kLookUpCandidates + 1 <= kWordBits);
    static_assert(2 * kLookUpCandidates + 1 <= 32);
    LookedUp first[N];
    LookedUp second[N];
    for (std::size_t k = 0; k < N; ++k)
        first[k].bits = nextBits(spans[k]) | std::uint64_t{1} << 63;
    for (int i = 0; i < 2; ++i)
        for (std::size_t k = 0; k < N; ++k)
            lookUp(first[k]);
    for (std::size_t k = 0; k < N; ++k) {
        second[k].bits = first[k].bits;
        lookUp(second[k]);
    }
    for (std::size_t k = 0; k < N; ++k)
        stalled[k] = !lookUpExtended(second[k]);
    for (std::size_t k = 0; k < N; ++k) {
        // Not std::countl_zero, which asks whether the bits are 0.
        spans[k].next += static_cast<unsigned>(__builtin_clzll(second[k].bits));
        const std::uint64_t low = 0xFFFFFFFF;
        append(fillings[k],
               (first[k].patterns & low) | (second[k].patterns & low) << first[k].count,
               first[k].patterns >> 32 | second[k].patterns >> 32 << first[k].count,
               first[k].count + second[k].count);
    }
}

/// Appends the next signed run, of any length. Returns: false, with nothing changed, when it may not
/// stand in 57 bits or is no run.
QMX_TARGET inline bool appendNextRun(Filling& f, BitSpan& span) {
    constexpr int kMostZeros = 27;
    const std::uint64_t bits = nextBits(span);
    const int zeros = std::countr_zero((bits >> 1) | std::uint64_t{1} << 62);
    if (zeros > kMostZeros) return false;
    // Both kinds of codes without a branch: for no zeros the value is 1 / 2.
    const int suffix = zeros - (zeros != 0 ? 1 : 0);
    const std::uint64_t value = (bits >> (zeros + 2)) & lowBits(suffix);
    span.next += static_cast<unsigned>(zeros + 2 + suffix);
    appendRun(f, bits & 1, ((std::uint64_t{1} << zeros) + 2 * value) / 2);
    return true;
}

/// Fills N windows alternately until one of them cannot go on. Requires: all can.
///
/// Where the look-ups have met a signed run that is not in the table, it is taken in the plain way. Asking
/// for that is 2 % faster than taking one that way behind all look-ups (2026-11-21).
template <std::size_t N>
QMX_TARGET void fillTogether(Parsing* streams, std::uint64_t capacity) {
    // Local copies: the stores of bytes may alias the originals.
    Filling fillings[N];
    BitSpan spans[N];
    for (std::size_t k = 0; k < N; ++k) {
        fillings[k] = streams[k].filling;
        spans[k] = streams[k].span;
    }
    for (bool all = true; all;) {
        bool stalled[N];
        appendRuns<N>(fillings, spans, stalled);
        for (std::size_t k = 0; k < N; ++k) {
            const bool taken = !stalled[k] || appendNextRun(fillings[k], spans[k]);
            streams[k].stuck = !taken;
            all = all && taken && canGoOn(fillings[k], spans[k], capacity);
        }
    }
    for (std::size_t k = 0; k < N; ++k) {
        streams[k].filling = fillings[k];
        streams[k].span = spans[k];
    }
}

QMX_TARGET inline void fillByOne(SectionWindow& w) {
    Filling f = fillingOf(w);
    const bool negative = readSignedRunLiterally(w);
    appendRun(f, negative ? 1 : 0, w.nextNew - f.next - 1);
}

/// Leaves to the decoder what cannot be read from memory. Returns: whether p goes on from memory;
/// else its window is full or at the end of the section.
QMX_TARGET inline bool resume(Parsing& p, std::uint64_t capacity) {
    if (!p.stuck && canGoOn(p.filling, p.span, capacity)) return true;
    close(p);
    SectionWindow& w = *p.window;
    while (w.nextNew < capacity && !w.isAtEnd()) {
        fillByOne(w);
        if (w.nextNew >= capacity) break;
        open(p, w);
        if (canGoOn(p.filling, p.span, capacity)) return true;
    }
    w.filled = std::min(w.nextNew, capacity + kGroupSize);
    return false;
}

/// Windows that are filled alternately.
inline constexpr int kTogether = 3;

/// The windows that are being filled, at the front.
struct ParsingSet {
    Parsing streams[kTogether];
    int active = 0;
};

/// Fills until fewer than `fewest` windows are not full.
QMX_TARGET void fillUntil(ParsingSet& set, int fewest, std::uint64_t capacity) {
    while (set.active >= fewest) {
        if (set.active == kTogether)
            fillTogether<kTogether>(set.streams, capacity);
        else if (set.active == 2)
            fillTogether<2>(set.streams, capacity);
        else
            fillTogether<1>(set.streams, capacity);
        for (int k = set.active - 1; k >= 0; --k)
            if (!resume(set.streams[k], capacity)) set.streams[k] = set.streams[--set.active];
    }
}

/// Fills the windows from first to last, inclusive, that have room for a quarter of their candidates, as far as
/// their sections go. Requires: first <= last; capacity is a multiple of 64 from 256 on and what the windows have room
/// for. Throws: std::bad_alloc, when a reader needs its file window.
[[gnu::noinline]] QMX_TARGET void refill(SectionWindow* first, SectionWindow* last,
                                         std::uint32_t capacity) {
    ParsingSet set;
    // The lowest bit planes have the most to fill; together they keep all streams busy.
    for (SectionWindow* w = first; w <= last; ++w) {
        if (w->filled - w->taken >= capacity * 3 / 4) continue;
        makeRoom(*w, capacity);
        if (w->nextNew >= capacity) continue;
        open(set.streams[set.active], *w);
        if (resume(set.streams[set.active], capacity)) ++set.active;
        fillUntil(set, kTogether, capacity);
    }
    fillUntil(set, 1, capacity);
}
