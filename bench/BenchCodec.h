#pragma once

#include <cstdint>
#include <memory>
#include <tesk/tesk.h>

namespace bench {

struct CodecDestroyer {
    void operator()(tesk_codec* codec) const { tesk_destroy(codec); }
};
using Codec = std::unique_ptr<tesk_codec, CodecDestroyer>;

/// The comparison at the end of a compression adds about the time of a decompression.
inline Codec makeCodec(std::uint32_t flags = TESK_UNVERIFIED) {
    tesk_options options = TESK_OPTIONS_INIT;
    options.flags = flags;
    tesk_codec* codec = nullptr;
    tesk_create(&options, &codec);
    return Codec(codec);
}

}  // namespace bench
