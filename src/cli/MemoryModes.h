#pragma once

#include "cli/CommandLine.h"

namespace qmx {

// The modes that work through the in-memory codec objects. Returns: the exit status, 0 whatever the
// codec answers (Quirk 15).
// Throws: FileError; std::bad_alloc.

int compressInMemory(const CommandLine& line);
int decompressInMemory(const CommandLine& line);

}  // namespace qmx
