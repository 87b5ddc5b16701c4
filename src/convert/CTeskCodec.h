#pragma once

#include <cstdint>

#include "api/tesk.h"
#include "convert/Buffer.h"
#include "convert/ImageFile.h"

namespace qmx {

/// A codec of the library, for one thread. Throws: Refusal in place of the library's statuses.
class CTeskCodec {
public:
    CTeskCodec();
    CTeskCodec(const CTeskCodec&) = delete;
    CTeskCodec& operator=(const CTeskCodec&) = delete;
    ~CTeskCodec() { tesk_destroy(codec); }

    /// A stream that the library made.
    class CBlock {
    public:
        CBlock() = default;
        CBlock(const CBlock&) = delete;
        CBlock& operator=(const CBlock&) = delete;
        ~CBlock() { tesk_release_block(owner, block); }
        ByteView view() const {
            return {static_cast<const unsigned char*>(block), result.stream_bytes};
        }

    private:
        friend class CTeskCodec;
        tesk_codec* owner = nullptr;
        void* block = nullptr;
        tesk_result result = TESK_RESULT_INIT;
    };

    /// Compresses an image, which is compared with what comes back unless a budget cuts it. budgetBytes: 0 for none.
    void compress(const ImageFile& image, std::size_t budgetBytes, CBlock& block);

    /// Decompresses at 1 : 2^levels, as far as the stream goes, into image, whose geometry and pixels are set; its
    /// bits hold all samples, whatever the stream declares. Requires: stream is as tesk_probe knows one.
    void decompress(ByteView stream, std::uint32_t levels, ImageFile& image);

private:
    tesk_codec* codec = nullptr;
};

/// Returns: the bits that the samples of an image use, of all its samples together.
std::uint32_t usedBitsOf(const ImageFile& image);

}  // namespace qmx
