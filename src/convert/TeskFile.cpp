#include "convert/TeskFile.h"

#include "convert/Refusal.h"
#include "convert/TrailerBoxes.h"

namespace qmx {

TeskFile openTeskFile(ByteView file) {
    TeskFile opened;
    if (tesk_probe(file.data(), file.size(), &opened.geometry) == TESK_UNSUPPORTED_FORMAT)
        throw Refusal{"is a stream of " + std::to_string(opened.geometry.bytes_per_pixel) +
                      " bytes for each pixel, which no image has"};
    std::size_t length = 0;
    const tesk_status status = tesk_measure(file.data(), file.size(), &length);
    if (status != TESK_OK && status != TESK_CUT) throw Refusal{"is a damaged stream"};
    opened.isComplete = status == TESK_OK;
    opened.stream = file.first(length);
    const CMemoryBytes bytes(file);
    const auto trailer = findTrailer(bytes, length);
    if (!trailer) {
        if (placeOfTrailer(bytes))
            throw Refusal{"is damaged: its trailer does not begin where its stream ends"};
        opened.strangeBytes = file.size() - length;
        return opened;
    }
    if (checksumOf(bytes, *trailer) != trailer->crc)
        throw Refusal{"is damaged: its checksum is another than that of its bytes"};
    opened.hasChecksum = true;
    opened.metadata = metadataOf(file, *trailer);
    // Types of raw samples are of samples of two bytes.
    if (opened.geometry.bytes_per_pixel != 2) opened.metadata.rawType.clear();
    return opened;
}

}  // namespace qmx
