#pragma once

namespace qmx {

class CBitReader;

/// Turns a coefficient stream back into image planes and pixels.
class IWaveletDecoder {
public:
    virtual ~IWaveletDecoder() = default;

    /// Reconstructs all planes from their coefficients, in place, once.
    virtual void untransform() = 0;
    /// Fills the planes with the coefficients that in holds. Every sample is defined afterwards.
    /// arg: 0 reads everything; N >= 1 reads N sections as if the stream ended there; below 0
    /// suspends the decoding after the row whose index is -arg.
    /// Returns: 0 complete; 4 the stream ended early, what came was decoded; 8 suspended, call
    /// again to go on (the finishing call returns 0 even if the stream had ended early); 16 killed,
    /// nothing decoded; 128 invalid section header, nothing decoded.
    /// Throws: std::bad_alloc. Requires: in outlives a suspension.
    virtual int readWavelet(CBitReader& in, int arg) = 0;
    /// Writes the reconstructed samples as pixels without row padding into out. bytesPerPixel: 1
    /// or 2 interleave the planes as 8- or 16-bit samples; 3 also undoes the colour transform and
    /// needs 3 planes; anything else writes nothing. limitBits: significant bits of a sample to
    /// limit to, none when 0 or less. out is aligned for its samples. Format: docs/format.md, 14
    /// Output samples.
    virtual void convertAndCopyToT(void* out, int bytesPerPixel, int limitBits) = 0;
    /// Suspends readWavelet after the current row. Any thread.
    virtual void stop() = 0;
    /// As stop; also ends readWavelet at the next section header and untransform after the current
    /// level. Any thread.
    virtual void kill() = 0;
};

}  // namespace qmx
