#pragma once

#include "api/CompressRequest.h"
#include "container/CEitherCoder.h"
#include "container/CExactEncoder.h"

namespace qmx {

/// A compression of the C interface: takes the rows of an image, one after the other, and ends in a stream.
class CCompression {
public:
    /// flags: TESK_PLAIN or 0 counts. Requires: imageJob has its memory and outlives this object.
    /// Throws: std::bad_alloc.
    CCompression(ImageJob& imageJob, std::uint32_t flags,
                 MostBitsOfShort mostBits = MostBitsOfShort::inMemory);

    /// Takes the next row of the job's pixels. Requires: there is one; job was not stopped.
    /// Throws: std::bad_alloc.
    void takeRow();
    /// Returns: rows to come.
    std::uint32_t rowsLeft();
    /// Closes the sections. Requires: all rows were taken; called once. Throws: std::bad_alloc.
    void finish();
    /// Returns: whether the rows have to be taken again, with the coefficients of inMemory.
    bool isTooNarrow();
    /// Makes the stream and puts it into the place of request. It restores the image unless request asks
    /// for a plain one, or for less bytes than it takes.
    ///
    /// Returns: TESK_OK, TESK_CUT, TESK_STOPPED, TESK_BUFFER_TOO_SMALL; TESK_NOT_RESTORABLE, with
    /// TESK_LOSS_WRAPPED if declaring raisedBits would help. Requires: finish was called, and nothing since; the
    /// flags of the constructor. Throws: std::bad_alloc.
    tesk_status conclude(CompressRequest& request);

private:
    template <class T>
    tesk_status concludePlain(CExactEncoder<T>& encoder, CompressRequest& request);
    template <class T>
    tesk_status concludeExact(CExactEncoder<T>& encoder, CompressRequest& request);
    template <class T>
    bool write(CCodedSections<T>& sections, CompressRequest& request);
    tesk_loss lossOf(const CompressRequest& request, const CodedFacts& facts);
    tesk_status compare(CompressRequest& request);

    ImageJob& job;
    CEitherCoder<CExactEncoder> encoder;
    WrittenStream written;
};

/// Compresses all rows of a job, which can be repeated; its declared bits may be raised.
/// Returns and throws: as conclude.
tesk_status compressWhole(ImageJob& job, CompressRequest& request);

}  // namespace qmx
