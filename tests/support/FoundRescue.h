#pragma once

#include <gtest/gtest.h>

#include "coding/encode/CSectionRescue.h"

namespace test {

/// What a rescue found.
struct FoundRescue {
    bool isFound = false;
    qmx::FoldedValues values;
    qmx::ClosingRuns closing = qmx::ClosingRuns::written;
};

/// Returns: the first that a search offers.
inline FoundRescue rescue(const qmx::FoldedValues& values, std::uint64_t longestBits,
                          const qmx::ICoefficientMove& move) {
    FoundRescue found;
    found.isFound = qmx::CSectionRescue(values, longestBits, move)
                        .search([&](const qmx::FoldedValues& moved, qmx::ClosingRuns closing) {
                            found.values = moved;
                            found.closing = closing;
                            return true;
                        });
    return found;
}

}  // namespace test
