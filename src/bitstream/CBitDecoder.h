#pragma once

#include "bitstream/CBitCoder.h"
#include "bitstream/CBitReader.h"

namespace qmx {

/// Decodes run codes: `run` zeros come next, then a one bit.
/// Format: docs/format.md, 11 Run code.
class CBitDecoder final : public CBitCoder {
public:
    /// Empty before the first attach.
    const char* getType() const override { return stream == nullptr ? "" : stream->getType(); }
    /// Source bits delivered so far; one less than 0 before attach, 42 too few after Quirk 3.
    std::uint64_t getTotal() const override { return total - 1 - run; }
    std::uint64_t getStoredTotal() const override {
        return stream == nullptr ? 0 : stream->getTotal();
    }

    /// Starts afresh on reader and reads the first run code. Requires: reader outlives the decoder
    /// or its next attach. Owns: nothing. Throws: what reader throws.
    void attach(CBitReader* reader);
    /// Reads the run code that follows a one bit into `run`. Throws: what the reader throws.
    void readRun();
    /// Returns: the next bit of the reader, which stands between run codes. Throws: as readRun.
    std::uint64_t readRawBit() { return stream->readBit(); }
    /// Where the run codes stand, for those who read them ahead; null before the first attach.
    CBitReader* source() const { return stream; }

    bool isTerminated() const { return terminated; }

private:
    /// Reads the number of zeros, and the suffix if there is one, into `run`; one too low, since
    /// the callers count up. Returns: false when the zeros were an escape or an end.
    bool readPlainRun();
    /// Gives an escape or an end, whose zeros stand in `run`, its meaning; leaves `run` one too
    /// low. Returns: whether the run is empty.
    bool terminatorBits();

    CBitReader* stream = nullptr;
    bool terminated = false;
};

}  // namespace qmx
