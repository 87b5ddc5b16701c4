#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "bitstream/WordBytes.h"
#include "support/TestImages.h"

// Folded values for the kernels of the coefficient coders.

namespace test {

/// How often values and magnitudes occur in test data.
enum class Density { empty, sparse, photo, dense, extreme };

inline constexpr Density kDensities[] = {Density::empty, Density::sparse, Density::photo,
                                         Density::dense, Density::extreme};

inline const char* nameOf(Density density) {
    constexpr const char* kNames[] = {"empty", "sparse", "photo", "dense", "extreme"};
    return kNames[static_cast<int>(density)];
}

template <class T>
T foldedOf(Density density, test::Random& random) {
    using Limits = std::numeric_limits<T>;
    const int bits = std::numeric_limits<T>::digits;
    switch (density) {
        case Density::empty:
            return static_cast<T>(random.below(2));
        case Density::sparse:
            return random.below(700) == 0 ? static_cast<T>(random.below(64)) : T{0};
        case Density::photo:
            return static_cast<T>(random.below(1U << random.below(9)));
        case Density::dense:
            return static_cast<T>(
                random.next() &
                qmx::lowBits(1 + static_cast<int>(random.below(static_cast<std::uint64_t>(bits)))));
        case Density::extreme:
            break;
    }
    const T extremes[] = {Limits::min(), Limits::max(), T{-1}, T{0},
                          T{1},          T{2},          T{3},  static_cast<T>(Limits::min() + 1)};
    return extremes[random.below(std::size(extremes))];
}

template <class T>
std::vector<T> foldedData(Density density, std::size_t count, std::uint64_t seed) {
    test::Random random(seed);
    std::vector<T> folded(count);
    for (T& value : folded)
        value = foldedOf<T>(density, random);
    return folded;
}

}  // namespace test
