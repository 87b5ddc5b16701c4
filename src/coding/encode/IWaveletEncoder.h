#pragma once

namespace qmx {

class CBitWriter;

/// Turns image planes into a coefficient stream.
class IWaveletEncoder {
public:
    virtual ~IWaveletEncoder() = default;

    /// Decomposes all planes in place, once. Throws: std::bad_alloc, with the planes untouched.
    virtual void transform() = 0;
    /// Codes the decomposed planes into out. The planes hold no coefficients afterwards.
    ///
    ///  - arg >= 0: everything. arg < 0: suspend after the row whose index is -arg.
    ///
    /// out is told the estimated size, which decides the block of a lazy writer.
    ///
    /// Requires: transform has run; not called again after it has returned 0 or thrown.
    /// Returns: 0 when the stream is complete; 8 when the work was suspended: the next call with the
    /// same writer goes on, unless it was killed: then every call returns 8.
    /// Throws: what out throws, what was written stays in it; std::bad_alloc.
    virtual int writeWavelet(CBitWriter& out, int arg) = 0;
    /// Suspends writeWavelet after the current row. Any thread.
    virtual void stop() = 0;
    /// As stop; also ends a transform after the current row or level, which leaves the planes of no
    /// use. Any thread.
    virtual void kill() = 0;
};

}  // namespace qmx
