#include "container/Budget.h"

#include <algorithm>

namespace qmx {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kDefaultRate = 1.5;
constexpr std::uint64_t kHeaderBytes = sizeof(TKHeader);

/// Bits of a sample for each of its bit planes: a bit plane codes a sample as refinement (1 bit) or
/// as significance, whose costliest code is a run of 0 with a sign (2 bits) or a run of 1 with a
/// sign (3 bits for 2 samples); longer runs cost less for each sample.
constexpr std::uint64_t kBitsPerSampleAndPlane = 2;
/// Headers, closing runs and the partial words of all sections that 3 planes, 6 orders and 62 bit
/// planes can have, 16 bytes each, with room to spare.
constexpr std::uint64_t kOverheadBytes = 65536;

std::int32_t wrappingRawBytes(const TKHeader& header) {
    const std::uint32_t pixels = std::uint32_t{header.xSize} * header.ySize;
    return static_cast<std::int32_t>(pixels * header.bytesPerPixel);
}

}  // namespace

std::uint64_t truncateToUnsigned(double value) {
    if (value >= kTwoTo63 && value < 2 * kTwoTo63)
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value - kTwoTo63)) +
               (std::uint64_t{1} << 63);
    const bool fitsSigned = value > -kTwoTo63 && value < kTwoTo63;  // false for NaN
    if (!fitsSigned) return std::uint64_t{1} << 63;
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

std::uint64_t streamBudgetBytes(const TKHeader& header, double rate) {
    const double times = rate == 0.0 ? kDefaultRate : rate;
    const std::uint64_t budget = truncateToUnsigned(times * wrappingRawBytes(header));
    return std::max(budget, kHeaderBytes) - kHeaderBytes;
}

std::uint64_t completeStreamBoundBytes(const TKHeader& header, int coefficientBits) {
    const std::uint64_t samples =
        std::uint64_t{header.xSize} * header.ySize * static_cast<std::uint64_t>(header.planes());
    const std::uint64_t bitsPerSample =
        kBitsPerSampleAndPlane * static_cast<std::uint64_t>(coefficientBits);
    return samples * bitsPerSample / 8 + kOverheadBytes;
}

}  // namespace qmx
