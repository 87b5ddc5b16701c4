#include "bitstream/CBitEncoder.h"

namespace qmx {

void CBitEncoder::terminate() {
    if (terminated) return;
    finalTotal = run + total;
    if (stream->getTotal() != 0) writeRunCode(*stream, run, kRunParameter);
    run = 0;
    terminated = true;
}

}  // namespace qmx
