#include "container/StreamBound.h"

#include <algorithm>

#include "coding/syntax/SectionSyntax.h"
#include "container/CoefficientDispatch.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {
namespace {

/// The top plane of streams whose coefficients wrap when they are folded (Quirk 13).
constexpr int kTopPlaneOfWraps = 61;
/// What a new coefficient takes beside 1 bit in each bit plane, and what the last run of a section takes beside
/// that of its coefficients: see below.
constexpr std::uint64_t kBitsOfNew = 2;
constexpr std::uint64_t kBitsOfLastRun = 2;

/// The values of a plane before it is transformed.
struct PlaneValues {
    /// From the least to the greatest.
    std::uint64_t range;
    /// The greatest magnitude.
    std::uint64_t greatest;
};

/// Samples count with all their bits, whatever the image declares.
PlaneValues valuesOf(const TKHeader& header, int plane) {
    if (header.bytesPerPixel == 2) return {65535, 65535};
    if (plane == 0) return {255, 255};
    return {510, 255};  // the differences of two colours
}

/// Returns: the range of low-pass values, of a range of values, in one direction.
std::uint64_t lowPassRange(std::uint64_t range) {
    return range + 2 * ((range + 3) / 4);
}

/// Bits of the magnitudes of each order.
struct OrderBits {
    int of[kMaxOrders];
};

OrderBits magnitudeBits(const PlaneValues& values, int levels) {
    OrderBits bits{};
    std::uint64_t range = values.range;
    for (int o = 0; o < levels; ++o) {
        bits.of[o] = bitLength(2 * range + 1);
        range = lowPassRange(lowPassRange(range));
    }
    // Thin images may be filtered in their long direction.
    if (levels == 0) range = lowPassRange(range);
    const std::uint64_t greatestLow = values.greatest + (range - values.range) / 2;
    bits.of[levels] = bitLength(std::max(greatestLow, values.range + 1));
    return bits;
}

std::uint64_t samplesFrom(const TKHeader& header, int order) {
    const auto along = [order](std::uint64_t side) { return ((side - 1) >> order) + 1; };
    return along(header.xSize) * along(header.ySize);
}

/// The bound for one type of coefficients.
class CTypeBound {
public:
    CTypeBound(const TKHeader& imageHeader, int coefficientBits)
        : header(imageHeader),
          typeBits(coefficientBits),
          levels(levelCount(header.xSize, header.ySize)),
          countBits(sampleCountBits(header.xSize, header.ySize)) {}

    std::uint64_t bits() {
        std::uint64_t total = kTopPlaneBits + kEndMarkBits + kEndPaddingBits;
        if (levels < 0) return total;
        for (int p = 0; p < header.planes(); ++p)
            total += payloadBits(p);
        for (int o = 0; o <= levels; ++o)
            total += static_cast<std::uint64_t>(header.planes()) * headerBits(o);
        return total;
    }

private:
    std::uint64_t coefficients(int order) const {
        const std::uint64_t coarser = order < levels ? samplesFrom(header, order + 1) : 0;
        return samplesFrom(header, order) - coarser;
    }

    /// Returns: whether a section may be longer than its length field can say, so that coefficients of the
    /// coarsest order are moved.
    bool mayMove() const {
        for (int o = 0; o <= levels; ++o)
            if (2 * coefficients(o) + 1 > longestSectionBits(countBits, o)) return true;
        return false;
    }

    /// Returns: magnitude bits of the coefficients that may be moved: of those less than 2^16, or of
    /// 2 * 2^(16 + 2 levels) and a low-pass value.
    int movedBits() const { return typeBits == 16 ? 16 : 18 + 2 * levels; }

    std::uint64_t payloadBits(int plane) {
        const OrderBits natural = magnitudeBits(valuesOf(header, plane), levels);
        std::uint64_t total = 0;
        for (int o = 0; o <= levels; ++o) {
            // The folded form of larger magnitudes wraps, and they count as 0.
            int bits = std::min(natural.of[o], typeBits - 2);
            if (bits < natural.of[o]) topPlane = kTopPlaneOfWraps;
            if (o == levels && mayMove()) bits = std::max(bits, movedBits());
            topPlane = std::max(topPlane, bits - 1);
            const auto planes = static_cast<std::uint64_t>(bits);
            total += coefficients(o) * (planes + kBitsOfNew) + kBitsOfLastRun * planes;
        }
        return total;
    }

    /// Of the n sections of all bit planes and the u sections of all but the top one.
    std::uint64_t headerBits(int order) const {
        const int bitsOfOne = kSectionTagBits + lengthFieldBits(countBits, order);
        const int sections = 2 * topPlane + 1;
        return static_cast<std::uint64_t>(bitsOfOne) * static_cast<std::uint64_t>(sections);
    }

    const TKHeader& header;
    int typeBits;
    int levels;
    int countBits;
    /// The highest that the planes have needed so far.
    int topPlane = 0;
};

}  // namespace

/// Let an order of a plane have N coefficients, with magnitudes of b bits at most.
///
/// Payloads. In each bit plane a coefficient is covered by the n section or refined by the u section. Refined,
/// it takes 1 bit. An n section that covers M coefficients, k of them new, has k signs and k + 1 runs, which add
/// up to M - k. The code of a run r has r + 2 bits at most: 1 for 0, 2 for 1, 4 for 2 and 3, 6 for 4, and later
/// it falls behind. That makes k + (M - k) + 2 (k + 1) = M + 2 k + 2 bits: 1 for each coefficient, 2 for each
/// new one, and 2. A section without new ones is empty, or one run of M that is spelled out. A coefficient is
/// new once at most. So all bit planes together have N b + 2 N + 2 b bits.
///
/// Magnitudes. Let the low-pass values of a level lie in a range R, from the least to the greatest. In one
/// direction a low-pass has weights that add up to 1, the negative ones to -1/4 at least, and roundings of 3/4:
/// the range grows at both ends by (R + 3) / 4. The weights of a detail add up to 0, in both directions their
/// magnitudes to 4 at most: a detail is 2 R at most, and 3/2 for roundings. Where the last column of a level is
/// not filtered, or a direction is too short, all that is less. The range of samples, or of differences of
/// colours, thus gives b for each order; declared bits play no part. What exceeds the type when it is folded
/// counts as 0, but the top plane is 61 then.
///
/// Rescues. Declared bits that are raised lead to the other type, so the larger bound counts. Other
/// representatives have 16 bits, coefficients with whole wraps 18 + 2 L, both of the coarsest order alone; the
/// offset of the latter has neither roundings nor details, so that what is said about details holds for the sum.
/// Both need a section that is too long. A sign and a run r take 2 (r + 1) bits at most, a last run 2 r + 1, so
/// no section of M coefficients is longer than 2 M + 1.
///
/// Headers are those of all bit planes up to the top plane, of empty sections too. A budget only cuts.
std::uint64_t streamBoundBytes(const TKHeader& header) {
    const auto bitsOf = [&](int typeBits) { return CTypeBound(header, typeBits).bits(); };
    std::uint64_t bits = dispatchCoefficients(
        header, MostBitsOfShort::inMemory, [&]<class T>() { return bitsOf(8 * sizeof(T)); },
        [] { return std::uint64_t{0}; });
    if (header.bytesPerPixel == 2) bits = std::max(bits, bitsOf(32));
    return sizeof(TKHeader) + (bits + 7) / 8;
}

}  // namespace qmx
