#pragma once

#include <cstdio>

#include "cli/CommandLine.h"
#include "container/FileIo.h"

namespace qmx {

// What the tool says on standard error when it cannot go on. All lines name the file and the
// reason. The state behind these functions belongs to the process, as its terminate handler does.

/// Remembers what an open file is called. At most two files are remembered.
/// Requires: name outlives the process's work; file stays open until the work on it has ended.
void rememberFile(std::FILE* file, const char* name);
/// Remembers the geometry for messages.
void rememberGeometry(const RawGeometry& geometry);

/// Prints which file of the request could not be used and why. Returns: exit status 1.
int reportFileError(const FileError& error, const CommandLine& line);
/// Prints "Out of memory" with the geometry. Returns: exit status 1.
int reportOutOfMemory();

/// From now on, a thrown number that nobody catches prints one line before the process aborts.
void installFatalErrorHandler();

}  // namespace qmx
