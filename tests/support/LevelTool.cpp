// The command line tool at a CPU level: `tesk_at_level [--cpu-level=LEVEL] ARGUMENT OF THE TOOL ...`.
// The tool itself has no such argument, and needs none.

#include "support/CpuLevelArgument.h"

/// main of src/cli/tesk.cpp, under the name that its file is compiled with here.
int toolMain(int argc, char** argv);

int main(int argc, char** argv) {
    const qmx::CCpuLevelGuard guard(test::takeCpuLevel(argc, argv));
    return toolMain(argc, argv);
}
