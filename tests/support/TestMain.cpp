// main of the test programs: `PROGRAM [--cpu-level=LEVEL] [ARGUMENT OF GOOGLETEST ...]`. A level holds
// for the whole run; without one the best level of the processor is active.

#include <gmock/gmock.h>

#include "support/CpuLevelArgument.h"

int main(int argc, char** argv) {
    const qmx::CCpuLevelGuard guard(test::takeCpuLevel(argc, argv));
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
