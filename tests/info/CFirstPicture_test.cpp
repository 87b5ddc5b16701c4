#include "info/CFirstPicture.h"

#include <gtest/gtest.h>

namespace {

using namespace qmx;

constexpr int kLevels = 3;

/// Sections that follow each other, 100 bits from one end to the next.
class Sections {
public:
    explicit Sections(int planes) : picture(planes, kLevels) {}

    Sections& add(int plane, int order, bool isRefinement, int bitPlane, std::uint64_t lengthBits) {
        PlacedSection section;
        section.header = {plane, order, isRefinement, lengthBits};
        section.bitPlane = bitPlane;
        end += 100;
        section.payloadBit = end - lengthBits;
        section.storedBits = lengthBits;
        picture.add(section);
        return *this;
    }
    Sections& n(int bitPlane, std::uint64_t lengthBits = 9, int plane = 0) {
        return add(plane, kLevels, false, bitPlane, lengthBits);
    }
    Sections& u(int bitPlane, int plane = 0) { return add(plane, kLevels, true, bitPlane, 5); }

    CFirstPicture picture;
    std::uint64_t end = 0;
};

TEST(CFirstPicture, IsThereWithFourBitPlanesOfTheCoarsestOrder) {
    Sections sections(1);
    sections.n(7, 0).n(6).n(5).u(5).n(4).u(4).n(3);
    EXPECT_EQ(sections.picture.endBit(), 0U);
    sections.u(3);
    EXPECT_EQ(sections.picture.endBit(), 800U);
    // What follows does not matter: lower bit planes, other orders.
    sections.n(2).u(2).add(0, 1, false, 6, 7);
    EXPECT_EQ(sections.picture.endBit(), 800U);
}

TEST(CFirstPicture, TheLastSectionThatIsNeededMayBeOfEitherKind) {
    Sections sections(1);
    sections.n(6).n(5).u(5).n(4).u(4).u(3).n(2);
    EXPECT_EQ(sections.picture.endBit(), 0U);
    sections.n(3);
    EXPECT_EQ(sections.picture.endBit(), 800U);
}

TEST(CFirstPicture, LowTopPlanesNeedFewerSections) {
    Sections sections(1);
    sections.n(1).n(0);
    EXPECT_EQ(sections.picture.endBit(), 0U);
    sections.u(0);
    EXPECT_EQ(sections.picture.endBit(), 300U);
    Sections lowest(1);
    EXPECT_EQ(lowest.n(0).picture.endBit(), 100U);
}

TEST(CFirstPicture, NeedsAllColourPlanesToTheSamePrecision) {
    Sections sections(3);
    sections.n(1).n(0).u(0);
    sections.n(1, 0, 1).n(0, 4, 1).u(0, 1);
    EXPECT_EQ(sections.picture.endBit(), 0U);
    sections.n(1, 0, 2).n(0, 0, 2).u(0, 2);
    EXPECT_EQ(sections.picture.endBit(), 900U);
}

TEST(CFirstPicture, SectionsThatAreCutAreNotThere) {
    CFirstPicture picture(1, kLevels);
    PlacedSection section;
    section.header = {0, kLevels, false, 30};
    section.payloadBit = 70;
    section.storedBits = 29;
    picture.add(section);
    EXPECT_EQ(picture.endBit(), 0U);
    section.storedBits = 30;
    picture.add(section);
    EXPECT_EQ(picture.endBit(), 100U);
}

TEST(CFirstPicture, ZerosAndBitPlanesOutsideTheCoefficientsGiveNone) {
    Sections sections(1);
    sections.n(61, 0).n(32).n(-1).n(-70000);
    EXPECT_EQ(sections.picture.endBit(), 0U);
    sections.n(1, 0).n(0, 0).u(0);
    EXPECT_EQ(sections.picture.endBit(), 0U);
    EXPECT_EQ(CFirstPicture(1, -1).endBit(), 0U);
}

}  // namespace
