#pragma once

namespace qmx {

/// Coefficients that are coded and decoded together: one bit of a word for each.
inline constexpr int kGroupSize = 64;

}  // namespace qmx
