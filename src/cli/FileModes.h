#pragma once

#include <cstdio>

#include "cli/CommandLine.h"
#include "container/FileIo.h"

namespace qmx {

/// Says that no image has so many bytes per pixel. Returns: exit status 0, Quirk 7.
int refuseFormat();

/// Opens a file; says so on standard error when it cannot.
/// Returns: the file, or null.
std::FILE* openNamed(const char* name, const char* mode);

/// The files of a compression or decompression.
struct JobFiles {
    FilePtr input;
    FilePtr output;
};

/// Opens the input of a request, then its output, which is emptied. Says on standard error what
/// cannot be opened, and refuses an output that is the input under whatever name.
/// Returns: whether both are open.
bool openJobFiles(const CommandLine& line, JobFiles& files);

// The modes that work from file to file. Returns: the exit status. Throws: 3 for a raw file that is
// too short or an output row that cannot be written; FileError; std::bad_alloc.

int compressFile(const CommandLine& line);
int decompressFile(const CommandLine& line);

}  // namespace qmx
