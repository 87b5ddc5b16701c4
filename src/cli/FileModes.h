#pragma once

#include <cstdio>

#include "cli/CommandLine.h"

namespace qmx {

/// Says that no image has so many bytes per pixel. Returns: exit status 0, Quirk 7.
int refuseFormat();

/// Opens a file; says so on standard error when it cannot.
/// Returns: the file, or null.
std::FILE* openNamed(const char* name, const char* mode);

// The modes that work from file to file. Returns: the exit status. Throws: 3 for a raw file that is
// too short or an output row that cannot be written; FileError; std::bad_alloc.

int compressFile(const CommandLine& line);
int decompressFile(const CommandLine& line);

}  // namespace qmx
