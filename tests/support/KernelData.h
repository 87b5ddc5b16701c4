#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "support/TestImages.h"

namespace test {

/// More than four vectors of the widest level, and their rest.
inline constexpr std::size_t kLongestRow = 150;

/// What kernels of samples and coefficients are tried on: any values, the least and the greatest ones, those
/// on both sides of 0, those on both sides of a byte's, and a single one.
enum class Data { random, extreme, small, nearBytes, constant };
inline constexpr Data kAllData[] = {Data::random, Data::extreme, Data::small, Data::nearBytes,
                                    Data::constant};

inline const char* nameOf(Data data) {
    constexpr const char* kNames[] = {"random", "extreme", "small", "near bytes", "constant"};
    return kNames[static_cast<int>(data)];
}

template <class T>
T kernelSample(Data data, std::uint64_t seed, Random& random) {
    using Limits = std::numeric_limits<T>;
    switch (data) {
        case Data::random:
            break;
        case Data::extreme:
            return random.below(2) != 0 ? Limits::max() : Limits::min();
        case Data::small:
            return static_cast<T>(static_cast<int>(random.below(7)) - 3);
        case Data::nearBytes:
            return static_cast<T>(static_cast<int>(random.below(600)) - 150);
        case Data::constant:
            return static_cast<T>(seed);
    }
    return static_cast<T>(random.next());
}

/// Returns: count values, which differ from seed to seed.
template <class T>
std::vector<T> kernelData(Data data, std::size_t count, std::uint64_t seed) {
    Random random(seed);
    std::vector<T> samples(count);
    for (T& sample : samples)
        sample = kernelSample<T>(data, seed, random);
    return samples;
}

}  // namespace test
