#pragma once

#include "FuzzInput.h"
#include "image/CpuLevel.h"

namespace fuzz {

/// Does work at every CPU level of this processor, from the scalar one up. Returns: what it gives,
/// which is the same at all of them.
template <class Work>
auto sameAtEveryCpuLevel(Work work) {
    const auto atLevel = [&work](int level) {
        const qmx::CCpuLevelGuard guard(static_cast<qmx::CpuLevel>(level));
        return work();
    };
    const auto expected = atLevel(0);
    for (int level = 1; level <= static_cast<int>(qmx::bestCpuLevel()); ++level)
        require(atLevel(level) == expected, "every CPU level gives the same");
    return expected;
}

}  // namespace fuzz
