// The lifting kernels on vectors, for the files LiftingKernels<level>.cpp. Requires before it:
//  - the Vec of the level, with QMX_TARGET;
//  - halves and quarters of 32-bit lanes; ShortVec and IntVec: the Vec of each coefficient type with
//    the steps of the filter, which it describes in the file.
//
// A vector of a line holds pairs (even, odd). Sums of two neighbours of a pair's sample are formed in
// 32 bits; half and quarter round them as LiftingRounding.h does. Where there are masks, the last
// vector of a line is a part of one: rows of 512 shorts gain a third (2026-11-21).

/// All samples of a vector.
template <class V>
struct Whole {
    QMX_TARGET static typename V::Lanes load(const typename V::Sample* from) {
        return V::load(from);
    }
    QMX_TARGET static void store(typename V::Sample* to, typename V::Lanes lanes) {
        V::store(to, lanes);
    }
};

/// The first samples of a vector; the others are 0.
template <class V>
struct Part {
    std::size_t samples;
    QMX_TARGET typename V::Lanes load(const typename V::Sample* from) const {
        return V::loadFirst(from, samples);
    }
    QMX_TARGET void store(typename V::Sample* to, typename V::Lanes lanes) const {
        V::storeFirst(to, lanes, samples);
    }
};

/// detail - half(even + next even), in the odd lanes of pairs. next: the vector one sample later.
template <class V>
QMX_TARGET inline typename V::Lanes predicted(typename V::Lanes pairs, typename V::Lanes next) {
    return V::sub(pairs, V::toOdd(halves(V::evenSums(pairs, next))));
}

/// Updates with the odds before and in a vector, as V::odds gives them.
template <class V>
QMX_TARGET inline typename V::Lanes oddQuarters(typename V::Lanes before, typename V::Lanes odds) {
    return V::toEven(quarters(Vec<int>::add(V::pairBefore(odds, before), odds)));
}

/// Filters the last part of a line, with the odds before it. Requires: 1 to V::kSamples samples.
template <class V>
QMX_TARGET inline void filterLast(typename V::Sample* line, std::size_t samples,
                                  typename V::Lanes before) {
    using Sample = typename V::Sample;
    const Sample last = line[samples - 1];
    const bool endsOdd = samples % 2 == 0;
    auto details = predicted<V>(V::loadFirst(line, samples), V::loadFirst(line + 1, samples - 1));
    if (endsOdd)
        details = V::withSample(details, samples - 1,
                                static_cast<Sample>(wrappingDifference(last, line[samples - 2])));
    const auto odds = V::odds(details);
    V::storeFirst(line, V::add(details, oddQuarters<V>(before, odds)), samples);
    auto* const end = line + samples;
    if (!endsOdd) end[-1] = static_cast<Sample>(wrappingSum(last, half(end[-2])));
}

/// Filters a line of one vector, with masks, without a look at single samples: what was just stored takes long to
/// load with another width. Crops of 16 x 16 are compressed in 0.95 of the time (2026-11-22).
/// Requires: 4 to V::kSamples samples.
template <class V>
QMX_TARGET inline void filterShort(typename V::Sample* line, std::size_t samples) {
    const auto pairs = V::loadFirst(line, samples);
    const auto evens = V::evens(pairs);
    const bool endsOdd = samples % 2 == 0;
    const std::size_t lastPair = (samples - 1) / 2;
    auto half = halves(Vec<int>::add(evens, V::evens(V::pairAfter(pairs, V::zero()))));
    if (endsOdd) half = V::withPair(half, lastPair, evens);
    const auto details = V::sub(pairs, V::toOdd(half));
    const auto odds = V::odds(details);
    const auto oddsBefore = V::pairBefore(odds, V::zero());
    auto quarter = V::withPair(quarters(Vec<int>::add(oddsBefore, odds)), 0, halves(odds));
    if (!endsOdd) quarter = V::withPair(quarter, lastPair, halves(oddsBefore));
    V::storeFirst(line, V::add(details, V::toEven(quarter)), samples);
}

/// Plain way: predict and update pair after pair. Each predict reads evens that no update has
/// changed yet, each update details that are final: a vector of pairs needs the even sample behind
/// it, which the next vector has not touched, and the detail before it, which the vector before left
/// in a register. The samples at the ends of the line go the plain way. A sample takes 0.10 ns with
/// AVX-512, 0.17 with AVX2 and 0.54 the plain way (2026-11-21).
template <class V>
QMX_TARGET void filterLine(typename V::Sample* line, std::size_t samples) {
    using Sample = typename V::Sample;
    if constexpr (V::kHasMasks) {
        if (samples <= V::kSamples) return filterShort<V>(line, samples);
    } else {
        if (samples <= V::kSamples) return filterWholeLine(line, static_cast<int>(samples));
    }
    const Sample first = line[0];
    std::size_t i = 0;
    auto before = V::zero();
    for (; i + V::kSamples < samples; i += V::kSamples) {
        const auto details = predicted<V>(V::load(line + i), V::load(line + i + 1));
        const auto odds = V::odds(details);
        V::store(line + i, V::add(details, oddQuarters<V>(before, odds)));
        before = odds;
    }
    if constexpr (V::kHasMasks) {
        filterLast<V>(line + i, samples - i, before);
    } else {
        filterLineFrom(line, static_cast<int>(i), static_cast<int>(samples));
    }
    line[0] = static_cast<Sample>(wrappingSum(first, half(line[1])));
}

/// Restores evens with the odds before and behind them.
template <class V, class Access>
QMX_TARGET inline void restoreEvens(Access access, typename V::Sample* evens,
                                    const typename V::Sample* oddsBehind) {
    const auto quarter = V::quarterOfSum(access.load(oddsBehind - 1), access.load(oddsBehind));
    access.store(evens, V::sub(access.load(evens), quarter));
}

/// Restores odds between restored evens. both: the samples of the line, those of two vectors.
template <class V, class Access>
QMX_TARGET inline void restorePairs(Access access, const typename V::Sample* evens,
                                    const typename V::Sample* odds, typename V::Lanes* both) {
    const auto here = access.load(evens);
    const auto half = V::halfOfSum(here, access.load(evens + 1));
    V::zip(here, V::add(access.load(odds), half), both);
}

/// Joins a line whose evens fill one vector at most, as filterShort. Requires: 4 to 2 V::kSamples samples.
template <class V>
QMX_TARGET inline void joinShort(typename V::Sample* line, const typename V::Sample* evens,
                                 const typename V::Sample* odds, std::size_t samples) {
    const std::size_t oddCount = samples / 2;
    const std::size_t evenCount = samples - oddCount;
    const bool endsOdd = samples % 2 == 0;
    const auto details = V::loadFirst(odds, oddCount);
    const auto before = V::laneBefore(details);
    // At the ends one of both is 0, and a half of the other one is meant.
    auto update = V::withLane(V::quarterOfSum(before, details), 0, V::halfOfSum(before, details));
    if (!endsOdd) update = V::withLane(update, oddCount, V::halfOfSum(before, details));
    const auto smooth = V::sub(V::loadFirst(evens, evenCount), update);
    auto half = V::halfOfSum(smooth, V::laneAfter(smooth));
    if (endsOdd) half = V::withLane(half, oddCount - 1, smooth);
    typename V::Lanes both[2];
    V::zip(smooth, V::add(details, half), both);
    const std::size_t inFirst = std::min(samples, V::kSamples);
    V::storeFirst(line, both[0], inFirst);
    V::storeFirst(line + V::kSamples, both[1], samples - inFirst);
}

/// All evens come first. Then a vector of them and one of odds make two of the line. A sample takes 0.15 ns with
/// AVX-512, 0.19 with AVX2 and 0.58 the plain way, on a busy machine (2026-11-22).
template <class V>
QMX_TARGET void joinLine(typename V::Sample* line, typename V::Sample* evens,
                         const typename V::Sample* odds, std::size_t samples) {
    if (samples < kShortestLine) return joinWholeLine(line, evens, odds, samples);
    if constexpr (V::kHasMasks)
        if (samples <= 2 * V::kSamples) return joinShort<V>(line, evens, odds, samples);
    const std::size_t oddCount = samples / 2;
    const std::size_t last = samples - oddCount - 1;
    unupdateEndLines(evens, odds, 1);
    std::size_t i = 1;
    for (; i + V::kSamples <= oddCount; i += V::kSamples)
        restoreEvens<V>(Whole<V>{}, evens + i, odds + i);
    if constexpr (V::kHasMasks)
        restoreEvens<V>(Part<V>{oddCount - i}, evens + i, odds + i);
    else
        unupdateLines(evens + i, odds + i - 1, odds + i, oddCount - i);
    if (last == oddCount) unupdateEndLines(evens + last, odds + last - 1, 1);

    typename V::Lanes both[2];
    for (i = 0; i + V::kSamples <= last; i += V::kSamples) {
        restorePairs<V>(Whole<V>{}, evens + i, odds + i, both);
        V::store(line + 2 * i, both[0]);
        V::store(line + 2 * i + V::kSamples, both[1]);
    }
    if constexpr (V::kHasMasks) {
        const std::size_t rest = 2 * (last - i);
        const std::size_t inFirst = std::min(rest, V::kSamples);
        restorePairs<V>(Part<V>{last - i}, evens + i, odds + i, both);
        V::storeFirst(line + 2 * i, both[0], inFirst);
        V::storeFirst(line + 2 * i + V::kSamples, both[1], rest - inFirst);
        i = last;
    }
    joinLineFrom(line, evens, odds, i, samples);
}

template <class V, class Access>
QMX_TARGET inline void filterColumns(Access access, typename V::Sample* smooth,
                                     typename V::Sample* detail,
                                     const typename V::Sample* detailBefore,
                                     const typename V::Sample* smoothAfter) {
    const auto here = access.load(smooth);
    const auto details = V::sub(access.load(detail), V::halfOfSum(here, access.load(smoothAfter)));
    access.store(detail, details);
    access.store(smooth, V::add(here, V::quarterOfSum(access.load(detailBefore), details)));
}

/// Columns do not depend on each other. A sample takes 0.06 ns with AVX-512, 0.09 with AVX2 and 0.32
/// the plain way (2026-11-21).
template <class V>
QMX_TARGET void filterRows(typename V::Sample* smooth, typename V::Sample* detail,
                           const typename V::Sample* detailBefore,
                           const typename V::Sample* smoothAfter, std::size_t columns) {
    std::size_t i = 0;
    for (; i + V::kSamples <= columns; i += V::kSamples)
        filterColumns<V>(Whole<V>{}, smooth + i, detail + i, detailBefore + i, smoothAfter + i);
    if constexpr (V::kHasMasks) {
        filterColumns<V>(Part<V>{columns - i}, smooth + i, detail + i, detailBefore + i,
                         smoothAfter + i);
    } else {
        predictLines(detail + i, smooth + i, smoothAfter + i, columns - i);
        updateLines(smooth + i, detailBefore + i, detail + i, columns - i);
    }
}

template <class V, class Access>
QMX_TARGET inline void unfilterColumns(Access access, typename V::Sample* smooth,
                                       typename V::Sample* detailBefore,
                                       const typename V::Sample* smoothBefore,
                                       const typename V::Sample* detail) {
    const auto before = access.load(detailBefore);
    const auto here = V::sub(access.load(smooth), V::quarterOfSum(before, access.load(detail)));
    access.store(smooth, here);
    access.store(detailBefore, V::add(before, V::halfOfSum(access.load(smoothBefore), here)));
}

template <class V>
QMX_TARGET void unfilterRows(typename V::Sample* smooth, typename V::Sample* detailBefore,
                             const typename V::Sample* smoothBefore,
                             const typename V::Sample* detail, std::size_t columns) {
    std::size_t i = 0;
    for (; i + V::kSamples <= columns; i += V::kSamples)
        unfilterColumns<V>(Whole<V>{}, smooth + i, detailBefore + i, smoothBefore + i, detail + i);
    if constexpr (V::kHasMasks) {
        unfilterColumns<V>(Part<V>{columns - i}, smooth + i, detailBefore + i, smoothBefore + i,
                           detail + i);
    } else {
        unupdateLines(smooth + i, detailBefore + i, detail + i, columns - i);
        unpredictLines(detailBefore + i, smoothBefore + i, smooth + i, columns - i);
    }
}

template <class V>
constexpr LiftingKernels<typename V::Sample> kTable{filterLine<V>, joinLine<V>, filterRows<V>,
                                                    unfilterRows<V>};

/// The lanes that the kernels of a sample work on.
template <class T>
using StepVec = std::conditional_t<std::is_same_v<T, short>, ShortVec, IntVec>;
