#pragma once

namespace qmx {

class CBitReader;

/// Turns a coefficient stream back into image planes and pixels.
class IWaveletDecoder {
public:
    virtual ~IWaveletDecoder() = default;

    /// Reconstructs all planes from their coefficients, in place, once.
    /// Throws: std::bad_alloc, with the planes untouched.
    virtual void untransform() = 0;
    /// Fills the planes with the coefficients that in holds. Every sample is defined after 0, 4 and 8;
    /// no other result touches the planes.
    ///
    ///  - arg 0: everything. arg >= 1: that many sections, as if the stream ended behind them.
    ///    arg < 0: suspend the decoding after the row whose index is -arg.
    ///
    /// Requires: in's data or file stay as they are until the decoding is complete; not called again
    /// after it has returned 0 or 4, or thrown.
    /// Returns: 0 complete; 4 the stream ended early, what came was decoded; 8 suspended, call again
    /// to go on (Quirk 12: the finishing call returns 0 even if the stream had ended early), but
    /// once killed every call returns 8;
    /// 16 killed, nothing decoded; 128 invalid section header, nothing decoded.
    /// Throws: std::bad_alloc.
    virtual int readWavelet(CBitReader& in, int arg) = 0;
    /// Writes the reconstructed samples into out, pixel by pixel, without row padding.
    ///
    ///  - bytesPerPixel 1 or 2: the planes interleaved as 8- or 16-bit samples. 3: the same in 8
    ///    bits with the colour transform undone, if there are 3 planes. Else nothing is written.
    ///  - limitBits: significant bits of a sample, to which it is limited; 0 or less for no limit.
    ///
    /// Requires: out holds all samples, at any address.
    /// Format: docs/format.md, 14 Output samples.
    virtual void convertAndCopyToT(void* out, int bytesPerPixel, int limitBits) = 0;
    /// Suspends readWavelet after the current row. Any thread.
    virtual void stop() = 0;
    /// As stop; also ends readWavelet at the next section header and untransform after the current
    /// row or level, which leaves the planes of no use. Any thread.
    virtual void kill() = 0;
};

}  // namespace qmx
