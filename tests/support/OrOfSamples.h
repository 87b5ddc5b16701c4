#pragma once

#include <cstring>

#include "support/Bytes.h"

namespace test {

/// Returns: the bits that samples use, in the plainest way.
inline std::uint32_t orOfSamples(const Bytes& samples, int sampleBytes) {
    std::uint32_t used = 0;
    for (std::size_t i = 0; i < samples.size(); i += static_cast<std::size_t>(sampleBytes)) {
        std::uint16_t sample = samples[i];
        if (sampleBytes == 2) std::memcpy(&sample, &samples[i], sizeof sample);
        used |= sample;
    }
    return used;
}

}  // namespace test
