#pragma once

#include <cstdio>

#include "cli/CommandLine.h"
#include "container/FileIo.h"
#include "container/Loss.h"
#include "container/TKHeader.h"

namespace qmx {

// What the tool says on standard error when it cannot go on. All lines name the file and the
// reason. The state behind these functions belongs to the process, as its terminate handler does.

/// Remembers a raw file that is read, at most two. Requires: name outlives the process's work; file
/// is open as long as a raw file that is too short may be met.
void rememberRawInput(std::FILE* file, const char* name);
/// Remembers what the output file is called. Requires: as above.
void rememberOutput(const char* name);
/// Remembers the geometry for messages.
void rememberGeometry(const RawGeometry& geometry);
void rememberGeometry(const TKHeader& header);

/// Prints which file of the request could not be used and why. Returns: exit status 1.
int reportFileError(const FileError& error, const CommandLine& line);
/// Prints that the stream gave no image. The modes that print progress lines say so there.
void reportDecompressionError(int result, const CommandLine& line);
/// Prints why a stream that was just written will not restore its image, or cannot be decoded. Prints
/// nothing when neither is so.
void reportLoss(const LossReport& report, const CommandLine& line);
/// Prints "Out of memory" with the geometry. Returns: exit status 1.
int reportOutOfMemory();
/// Prints why standard output does not take the result. Returns: exit status 1.
int reportLostResult();
/// Prints that no image has the remembered geometry. Returns: exit status 1.
int reportImpossibleSize();

/// From now on, a thrown number that nobody catches prints one line before the process aborts.
void installFatalErrorHandler();

}  // namespace qmx
