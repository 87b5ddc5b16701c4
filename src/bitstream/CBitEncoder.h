#pragma once

#include "bitstream/CBitChunkWriter.h"
#include "bitstream/CBitCoder.h"
#include "bitstream/RunCode.h"

namespace qmx {

/// Codes the one bits of a mostly-zero sequence as the runs of zeros before them.
/// Format: docs/format.md, 11 Run code.
class CBitEncoder : public CBitCoder {
public:
    /// Requires: writer outlives the encoder.
    explicit CBitEncoder(CBitWriter* writer) : stream(writer) {}

    const char* getType() const override { return stream->getType(); }
    /// Source bits coded so far, zeros that wait for their one bit included.
    std::uint64_t getTotal() const override { return terminated ? finalTotal : run + total; }
    std::uint64_t getStoredTotal() const override { return stream->getTotal(); }

    /// Codes a one bit after zeros zero bits, in place of the run kept here. Throws: std::bad_alloc
    /// or what the writer throws.
    void encodeOne(std::uint64_t zeros) {
        total += zeros + 1;
        writeRunCode(*stream, zeros, kRunParameter);
        run = 0;
    }
    /// Sends the zeros after the last one bit, if there was a one bit at all, and freezes the
    /// total. Throws: as encodeOne.
    void terminate();
    bool isTerminated() const { return terminated; }

protected:
    CBitWriter* stream;
    std::uint64_t finalTotal = 0;
    bool terminated = false;
};

/// An encoder with a chunk list of its own to write into.
class CBitChunkEncoder final : public CBitEncoder {
public:
    // The base only keeps the address of the writer, which is constructed after it.
    CBitChunkEncoder() : CBitEncoder(&chunkWriter) {}

    CBitChunkWriter& writer() { return chunkWriter; }

private:
    CBitChunkWriter chunkWriter;
};

}  // namespace qmx
