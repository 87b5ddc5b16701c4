#include "bitstream/CBitDecoder.h"

#include "bitstream/RunCode.h"

namespace qmx {

void CBitDecoder::attach(CBitReader* reader) {
    stream = reader;
    run = 0;
    total = 0;
    terminated = false;
    readRun();
}

bool CBitDecoder::readPlainRun() {
    const int zeros = stream->countZeros(kEndZeros);
    run = static_cast<std::uint64_t>(zeros);
    if (zeros >= kEscapeZeros) return false;
    if (zeros > kRunParameter)
        run = runOf(zeros, stream->readInt(suffixBits(zeros, kRunParameter)), kRunParameter);
    total += run + 1;
    --run;  // wraps for an empty run, which the caller's step up undoes
    return true;
}

void CBitDecoder::readRun() {
    if (!readPlainRun()) terminatorBits();
    ++run;
}

bool CBitDecoder::terminatorBits() {
    if (run >= kEndZeros) {
        run = kEndRun;
        total += kEndRun + 2;
        return false;
    }
    // Quirk 3: a second escape leaves its 40 zeros as the run. docs/quirks.md.
    if (terminated) return false;
    terminated = true;
    if (!readPlainRun()) return terminatorBits();
    return run + 1 == 0;
}

}  // namespace qmx
