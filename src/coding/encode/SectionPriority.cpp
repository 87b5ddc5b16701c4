#include "coding/encode/SectionPriority.h"

#include <array>
#include <cstddef>

namespace qmx {
namespace {

/// Each bit plane and each order outweighs the one below it by this factor.
constexpr double kPlaneGain = 3.7;
/// New coefficients outweigh refinement of the same plane by this factor.
constexpr double kSignificanceGain = 8.0;
/// Weights of colour plane 0 and of the others.
constexpr double kFirstPlaneWeight = 1.0;
constexpr double kOtherPlaneWeight = 0.2;
/// Sections without payload cost only their header and go out first.
constexpr double kEmptySectionValue = 4.2e11;
/// Top plane 61 at order 5.
constexpr std::size_t kHighestPower = 66;

/// Powers by successive multiplication, which pow() need not equal to the last bit.
constexpr std::array<double, kHighestPower + 1> makePowers() {
    std::array<double, kHighestPower + 1> powers{};
    double power = 1.0;
    for (double& entry : powers) {
        entry = power;
        power *= kPlaneGain;
    }
    return powers;
}

constexpr auto kPowers = makePowers();

double weight(int plane) {
    return plane == 0 ? kFirstPlaneWeight : kOtherPlaneWeight;
}

}  // namespace

double refinementValue(int plane, int order, int bitPlane) {
    return kPowers[static_cast<unsigned>(bitPlane + order)] * weight(plane);
}

double significanceValue(int plane, int order, int bitPlane, std::uint64_t newCount,
                         std::uint64_t storedBits) {
    if (storedBits == 0) return kEmptySectionValue;
    const double gain = refinementValue(plane, order, bitPlane) * kSignificanceGain;
    return static_cast<double>(newCount) * gain / static_cast<double>(storedBits + 1);
}

}  // namespace qmx
