#pragma once

#include "bitstream/Status.h"

namespace qmx {

// Out of line, so that a hot loop that may throw stays small. Each throws the number of its name.

[[noreturn]] void throwEndOfStream();
[[noreturn]] void throwBadPlaneCount();
[[noreturn]] void throwWriteFailed();
[[noreturn]] void throwSectionLimit();

}  // namespace qmx
