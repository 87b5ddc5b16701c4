#pragma once

#include "info/StreamReport.h"

namespace qmx {

/// Decodes a stream completely, as the word d does, and drops the image. Returns: how the decoder
/// found that it ends; an invalid one gives no image. Requires: file has a supported header.
/// Throws: FileError; std::bad_alloc when there is no memory for the image.
StreamEnd decodeStream(const CStreamFile& file);

/// Decodes a stream, and computes the checksum that its trailer should have. Both stand in the report
/// afterwards: the decoder has the last word about the end, though it says what the section headers say.
/// Requires: report describes file. Throws: as decodeStream.
void checkStream(const CStreamFile& file, StreamReport& report);

}  // namespace qmx
