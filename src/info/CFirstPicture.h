#pragma once

#include <array>

#include "coding/syntax/CSectionTable.h"
#include "coding/syntax/CSectionWalk.h"

namespace qmx {

/// Bit planes of the coarsest order that make a first picture: values to 1/16 of the largest one.
inline constexpr int kFirstPicturePlanes = 4;

/// Finds out how much of a stream gives a first picture: the image at a scale of 1 : 2^levels, of
/// which every colour plane is known to within 1/16 of the range that is used.
///
/// Let h be the highest bit plane in which the coarsest order of any colour plane has coefficients
/// that are new. A first picture needs, of the coarsest order of every colour plane, the n sections of
/// the bit planes h to h - 3 and the u sections of h - 1 to h - 3, as far as these are not below 0.
class CFirstPicture {
public:
    /// Requires: planes is 1 or 3.
    CFirstPicture(int planes, int levels) : planeCount(planes), coarsestOrder(levels) {}

    /// Takes notice of a section; each one once, in the order of the stream.
    void add(const PlacedSection& section);
    /// Returns: the bit behind the last section that a first picture needs, 0 when the stream has none
    /// (yet) or no coefficient of the coarsest order other than 0.
    std::uint64_t endBit() const;

private:
    /// Bits behind the whole sections of a colour plane, 0 where there is none.
    struct Ends {
        std::array<std::uint64_t, kTableBitPlanes<int>> significance{};
        std::array<std::uint64_t, kTableBitPlanes<int>> refinement{};
    };

    int planeCount;
    int coarsestOrder;
    std::int64_t highestBitPlane = -1;
    std::array<Ends, kTablePlanes> endsOfPlanes;
};

}  // namespace qmx
