#pragma once

#include "container/ExactEncoding.h"

namespace qmx {

/// Decodes a stream and compares, as decoders of both profiles would.
///
/// Returns: whether the stream is complete and gives the samples of job; false when job was stopped.
/// Requires: stream holds streamBytes bytes behind its 16 header bytes, which are job.header.
/// Throws: std::bad_alloc.
bool restoresExactly(const ExactJob& job, const unsigned char* stream, std::size_t streamBytes);

/// The same for decoders of the memory profile alone.
bool restoresInMemory(const ExactJob& job, const unsigned char* stream, std::size_t streamBytes);

}  // namespace qmx
