#include "bitstream/Throwing.h"

namespace qmx {

void throwEndOfStream() {
    throw int{kThrownEndOfStream};
}
void throwBadPlaneCount() {
    throw int{kThrownBadPlaneCount};
}
void throwWriteFailed() {
    throw int{kThrownWriteFailed};
}
void throwSectionLimit() {
    throw int{kThrownSectionLimit};
}

}  // namespace qmx
