// The lifting kernels on vectors, for the files LiftingKernels<level>.cpp. Requires before it:
//  - QMX_TARGET, the function attribute of the level;
//  - for each coefficient type a struct V of lane operations, which it describes in the file.
//
// A vector of a line holds pairs (even, odd). Sums of two neighbours of a pair's sample are formed in
// 32 bits; half and quarter round them as LiftingRounding.h does.

/// Finishes what whole vectors have left of a line, from the even position i on.
template <class T>
inline void filterRest(T* line, std::size_t i, std::size_t samples) {
    filterLinesFrom(LiftingLines<T>{line, 1, 1, 1}, static_cast<int>(i), static_cast<int>(samples));
}

template <class T>
inline void unfilterRest(T* line, std::size_t i, std::size_t samples) {
    unfilterLinesFrom(LiftingLines<T>{line, 1, 1, 1}, static_cast<int>(i),
                      static_cast<int>(samples));
}

/// Plain way: predict and update pair after pair. Each predict reads evens that no update has
/// changed yet, each update details that are final: a vector of pairs needs the even sample behind
/// it, which the next vector has not touched, and the detail before it, which the vector before left
/// in a register. Both ends of the line go the plain way.
template <class V>
QMX_TARGET void filterLine(typename V::Sample* line, std::size_t samples) {
    using Sample = typename V::Sample;
    if (samples < V::kSamples + 2)
        return filterLines(LiftingLines<Sample>{line, 1, 1, 1}, static_cast<int>(samples));
    const Sample first = line[0];
    std::size_t i = 0;
    auto before = V::load(line);
    for (; i + V::kSamples + 2 <= samples; i += V::kSamples) {
        const auto pairs = V::load(line + i);
        const auto evenSums = V::evenSums(pairs, V::load(line + i + 2));
        const auto details = V::sub(pairs, V::toOdd(V::half(evenSums)));
        const auto oddSums = V::oddSums(V::pairBefore(details, before), details);
        V::store(line + i, V::add(details, V::toEven(V::quarter(oddSums))));
        before = details;
    }
    line[0] = static_cast<Sample>(wrappingSum(first, half(line[1])));
    filterRest(line, i, samples);
}

/// The evens of a vector come first. Its odds need the even sample behind it, so that they are made
/// one vector later.
template <class V>
QMX_TARGET void unfilterLine(typename V::Sample* line, std::size_t samples) {
    using Sample = typename V::Sample;
    if (samples < V::kSamples + 3)
        return unfilterLines(LiftingLines<Sample>{line, 1, 1, 1}, static_cast<int>(samples));
    auto before = V::load(line);
    const auto firstEven = static_cast<Sample>(wrappingDifference(line[0], half(line[1])));
    auto done = V::withFirst(
        V::sub(before, V::toEven(V::quarter(V::oddSums(V::pairBefore(before, before), before)))),
        firstEven);
    std::size_t i = V::kSamples;
    for (; i + V::kSamples + 3 <= samples; i += V::kSamples) {
        const auto pairs = V::load(line + i);
        const auto oddSums = V::oddSums(V::pairBefore(pairs, before), pairs);
        const auto evens = V::sub(pairs, V::toEven(V::quarter(oddSums)));
        const auto evenSums = V::evenSums(done, V::pairAfter(done, evens));
        V::store(line + i - V::kSamples, V::add(done, V::toOdd(V::half(evenSums))));
        before = pairs;
        done = evens;
    }
    unupdateLines(line + i, line + i - 1, line + i + 1, 1, 1);
    const auto after = V::withFirst(done, line[i]);
    const auto evenSums = V::evenSums(done, V::pairAfter(done, after));
    V::store(line + i - V::kSamples, V::add(done, V::toOdd(V::half(evenSums))));
    unfilterRest(line, i + 2, samples);
}

/// Column after column independent of the others.
template <class V>
QMX_TARGET void filterRows(typename V::Sample* smooth, typename V::Sample* detail,
                           const typename V::Sample* detailBefore,
                           const typename V::Sample* smoothAfter, std::size_t columns) {
    std::size_t i = 0;
    for (; i + V::kSamples <= columns; i += V::kSamples) {
        const auto here = V::load(smooth + i);
        const auto details =
            V::sub(V::load(detail + i), V::halfOfSum(here, V::load(smoothAfter + i)));
        V::store(detail + i, details);
        V::store(smooth + i, V::add(here, V::quarterOfSum(V::load(detailBefore + i), details)));
    }
    predictLines(detail + i, smooth + i, smoothAfter + i, columns - i, 1);
    updateLines(smooth + i, detailBefore + i, detail + i, columns - i, 1);
}

template <class V>
QMX_TARGET void unfilterRows(typename V::Sample* smooth, typename V::Sample* detailBefore,
                             const typename V::Sample* smoothBefore,
                             const typename V::Sample* detail, std::size_t columns) {
    std::size_t i = 0;
    for (; i + V::kSamples <= columns; i += V::kSamples) {
        const auto before = V::load(detailBefore + i);
        const auto here = V::sub(V::load(smooth + i), V::quarterOfSum(before, V::load(detail + i)));
        V::store(smooth + i, here);
        V::store(detailBefore + i, V::add(before, V::halfOfSum(V::load(smoothBefore + i), here)));
    }
    unupdateLines(smooth + i, detailBefore + i, detail + i, columns - i, 1);
    unpredictLines(detailBefore + i, smoothBefore + i, smooth + i, columns - i, 1);
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
        V::store(line + 2 * i, V::withEvens(V::load(line + 2 * i), evens + i));
    for (; i < count; ++i)
        line[2 * i] = evens[i];
}

template <class V>
constexpr LiftingKernels<typename V::Sample> kTable{filterLine<V>,   unfilterLine<V>, filterRows<V>,
                                                    unfilterRows<V>, takeEvens<V>,    putEvens<V>};
