#include "coding/encode/SectionPriority.h"

#include <gtest/gtest.h>

namespace {

using qmx::refinementValue;
using qmx::significanceValue;

double powerBySteps(int exponent) {
    volatile double power = 1.0;
    for (int i = 0; i < exponent; ++i)
        power = power * 3.7;
    return power;
}

TEST(SectionPriority, RefinementIsThePowerTimesThePlaneWeight) {
    for (int bitPlane = 0; bitPlane <= 61; ++bitPlane)
        for (int order = 0; order <= 5; ++order) {
            const double power = powerBySteps(bitPlane + order);
            EXPECT_EQ(refinementValue(0, order, bitPlane), power);
            volatile double weighted = power * 0.2;
            EXPECT_EQ(refinementValue(1, order, bitPlane), weighted);
            EXPECT_EQ(refinementValue(2, order, bitPlane), weighted);
        }
}

TEST(SectionPriority, SignificanceRoundsInTheOrderWeightEightCountBits) {
    volatile double gain = powerBySteps(9) * 0.2;
    gain = gain * 8.0;
    volatile double value = 1234567.0 * gain;
    value = value / 7654322.0;
    EXPECT_EQ(significanceValue(2, 4, 5, 1234567, 7654321), value);
}

TEST(SectionPriority, EmptySectionsHaveAFixedValue) {
    EXPECT_EQ(significanceValue(0, 0, 0, 0, 0), 4.2e11);
    EXPECT_EQ(significanceValue(2, 5, 61, 9, 0), 4.2e11);
}

TEST(SectionPriority, TheFirstPlaneOutranksTheOthersByFive) {
    EXPECT_NEAR(significanceValue(0, 2, 3, 10, 50) / significanceValue(1, 2, 3, 10, 50), 5.0, 1e-9);
}

}  // namespace
