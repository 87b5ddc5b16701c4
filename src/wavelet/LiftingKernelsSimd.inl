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

/// The inverse of predicted, with the evens in a vector and behind it, as V::evens gives them.
template <class V>
QMX_TARGET inline typename V::Lanes unpredicted(typename V::Lanes pairs, typename V::Lanes evens,
                                                typename V::Lanes after) {
    return V::add(pairs, V::toOdd(halves(Vec<int>::add(evens, V::pairAfter(evens, after)))));
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

/// Plain way: predict and update pair after pair. Each predict reads evens that no update has
/// changed yet, each update details that are final: a vector of pairs needs the even sample behind
/// it, which the next vector has not touched, and the detail before it, which the vector before left
/// in a register. The samples at the ends of the line go the plain way. A sample takes 0.10 ns with
/// AVX-512, 0.17 with AVX2 and 0.54 the plain way (2026-11-21).
template <class V>
QMX_TARGET void filterLine(typename V::Sample* line, std::size_t samples) {
    using Sample = typename V::Sample;
    if (!V::kHasMasks && samples <= V::kSamples)
        return filterWholeLine(line, static_cast<int>(samples));
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

/// What the vectors of a line leave: the last of them, whose evens are restored and whose odds wait
/// for the even sample behind it.
template <class V>
struct Pending {
    typename V::Lanes pairs;
    typename V::Lanes evens;
    typename V::Lanes odds;
};

/// Restores the evens of a vector, with the odds before it.
template <class V>
QMX_TARGET inline Pending<V> restoreEvens(typename V::Lanes pairs, typename V::Lanes before) {
    const auto odds = V::odds(pairs);
    const auto restored = V::sub(pairs, oddQuarters<V>(before, odds));
    return {restored, V::evens(restored), odds};
}

/// Restores the end of a line with masks: samples behind the pending vector, if there is one.
template <class V>
QMX_TARGET inline void unfilterLast(typename V::Sample* line, std::size_t samples,
                                    const Pending<V>& pending, bool hasPending,
                                    typename V::Sample firstEven) {
    using Sample = typename V::Sample;
    auto* const end = line + samples;
    const Sample last = end[-1];
    const bool endsOdd = samples % 2 == 0;
    auto restored = restoreEvens<V>(V::loadFirst(line, samples), pending.odds).pairs;
    if (!endsOdd)
        restored = V::withSample(restored, samples - 1,
                                 static_cast<Sample>(wrappingDifference(last, half(end[-2]))));
    if (!hasPending) restored = V::withSample(restored, 0, firstEven);
    const auto evens = V::evens(restored);
    if (hasPending)
        V::store(line - V::kSamples, unpredicted<V>(pending.pairs, pending.evens, evens));
    V::storeFirst(line, unpredicted<V>(restored, evens, evens), samples);
    if (endsOdd) end[-1] = static_cast<Sample>(wrappingSum(last, end[-2]));
}

/// The same without masks. Requires: a pending vector.
template <class V>
QMX_TARGET inline void unfilterRest(typename V::Sample* line, std::size_t samples,
                                    const Pending<V>& pending) {
    if (samples == 1)
        unupdateEndLines(line, line - 1, 1);
    else
        unupdateLines(line, line - 1, line + 1, 1);
    const auto after = V::evens(V::withFirst(V::zero(), line[0]));
    V::store(line - V::kSamples, unpredicted<V>(pending.pairs, pending.evens, after));
    if (samples == 2) unpredictEndLines(line + 1, line, 1);
    if (samples > 2) unfilterLineFrom(line, 2, static_cast<int>(samples));
}

/// The evens of a vector come first. Its odds need the even sample behind it, so that they are made
/// one vector later. A sample takes 0.11 ns with AVX-512, 0.19 with AVX2 and 0.53 the plain way
/// (2026-11-21).
template <class V>
QMX_TARGET void unfilterLine(typename V::Sample* line, std::size_t samples) {
    using Sample = typename V::Sample;
    const auto firstEven = static_cast<Sample>(wrappingDifference(line[0], half(line[1])));
    if (samples < V::kSamples) {
        if constexpr (V::kHasMasks)
            return unfilterLast<V>(line, samples, {V::zero(), V::zero(), V::zero()}, false,
                                   firstEven);
        return unfilterWholeLine(line, static_cast<int>(samples));
    }
    auto pending = restoreEvens<V>(V::load(line), V::zero());
    pending.pairs = V::withFirst(pending.pairs, firstEven);
    pending.evens = V::evens(pending.pairs);
    std::size_t i = V::kSamples;
    for (; i + V::kSamples <= samples; i += V::kSamples) {
        const auto next = restoreEvens<V>(V::load(line + i), pending.odds);
        V::store(line + i - V::kSamples, unpredicted<V>(pending.pairs, pending.evens, next.evens));
        pending = next;
    }
    if (i == samples) {
        const Sample last = line[i - 1];
        V::store(line + i - V::kSamples,
                 unpredicted<V>(pending.pairs, pending.evens, pending.evens));
        line[i - 1] = static_cast<Sample>(wrappingSum(last, line[i - 2]));
    } else if constexpr (V::kHasMasks) {
        unfilterLast<V>(line + i, samples - i, pending, true, firstEven);
    } else {
        unfilterRest<V>(line + i, samples - i, pending);
    }
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
QMX_TARGET void takeEvens(typename V::Sample* evens, const typename V::Sample* line,
                          std::size_t count) {
    std::size_t i = 0;
    for (; i + V::kSamples + 1 <= count; i += V::kSamples)
        V::store(evens + i, V::evensOf(V::load(line + 2 * i), V::load(line + 2 * i + V::kSamples)));
    for (; i < count; ++i)
        evens[i] = line[2 * i];
}

template <class V>
QMX_TARGET void putEvens(typename V::Sample* line, const typename V::Sample* evens,
                         std::size_t count) {
    constexpr std::size_t kPairs = V::kSamples / 2;
    std::size_t i = 0;
    for (; i + kPairs + 1 <= count; i += kPairs)
        V::putEvens(line + 2 * i, V::loadHalf(evens + i));
    for (; i < count; ++i)
        line[2 * i] = evens[i];
}

template <class V>
constexpr LiftingKernels<typename V::Sample> kTable{filterLine<V>,   unfilterLine<V>, filterRows<V>,
                                                    unfilterRows<V>, takeEvens<V>,    putEvens<V>};

/// The lanes that the kernels of a sample work on.
template <class T>
using StepVec = std::conditional_t<std::is_same_v<T, short>, ShortVec, IntVec>;
