#pragma once

#include "api/tesk.h"
#include "convert/Buffer.h"
#include "convert/Metadata.h"

namespace qmx {

/// What stands in a file that begins as a stream.
struct TeskFile {
    tesk_image geometry = TESK_IMAGE_INIT;
    /// Without what follows its end.
    ByteView stream;
    bool isComplete = false;
    /// There is a trailer, and its checksum was right.
    bool hasChecksum = false;
    /// Bytes behind the end that are no trailer.
    std::uint64_t strangeBytes = 0;
    Metadata metadata;

    /// Whether nothing speaks against the image being the one that was compressed.
    bool isWhole() const { return isComplete && strangeBytes == 0; }
};

/// Throws: Refusal for a stream that is damaged: no sections of this image, or another checksum.
TeskFile openTeskFile(ByteView file);

}  // namespace qmx
