#pragma once

#include <cstdint>

#include "bitstream/CBitStreamer.h"

namespace qmx {

/// State shared by the two directions of the run coder.
class CBitCoder : public CBitStreamer {
public:
    const char* getCode() const override { return "rleish"; }
    /// 'w' for the decoder as well. Quirk 2: docs/quirks.md.
    char getMode() const override { return 'w'; }

    /// Encoder: zeros since the last one bit. Decoder: zeros still to deliver before the next one.
    std::uint64_t getRun() const { return run; }
    void setRun(std::uint64_t zeros) { run = zeros; }

protected:
    std::uint64_t run = 0;
    std::uint64_t total = 0;
};

}  // namespace qmx
