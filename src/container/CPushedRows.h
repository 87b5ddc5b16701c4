#pragma once

#include "bitstream/CReflectedCrc.h"
#include "container/IPixelRows.h"

namespace qmx {

/// Rows that somebody hands over one by one, and takes away again. What is kept of them is a checksum, by
/// which another image is taken for this one with a chance of 1 in 2^64, and never one that differs in a
/// single sample, or in neighbouring ones of up to 64 bits.
class CPushedRows final : public IPixelRows {
public:
    explicit CPushedRows(const TKHeader& imageHeader) : header(imageHeader) {}

    /// Makes a row the one that `row` returns. Requires: it stays until the next one, or until nothing
    /// asks for it; no more than header.ySize.
    void push(const unsigned char* pixels);

    /// Requires: r is the row that was pushed last.
    const unsigned char* row(int r) override;
    bool canRepeat() const override { return false; }
    bool isSameRow(int r, const unsigned char* decoded, std::size_t sizeBytes) override;
    unsigned usedBits(const TKHeader&, const CStopRequest&) override { return used; }

private:
    TKHeader header;
    const unsigned char* current = nullptr;
    int count = 0;
    CCrc64 pushed;
    CCrc64 compared;
    unsigned used = 0;
};

}  // namespace qmx
