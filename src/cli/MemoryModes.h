#pragma once

#include "cli/CommandLine.h"

namespace qmx {

// The modes that work through the in-memory codec objects. Returns: the exit status.
// Throws: FileError; std::bad_alloc.

int compressInMemory(const CommandLine& line);
int decompressInMemory(const CommandLine& line);

}  // namespace qmx
