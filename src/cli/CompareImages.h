#pragma once

#include "cli/CommandLine.h"

namespace qmx {

/// Error figures of one raw image against another.
struct ErrorFigures {
    double mse;
    double rmse;
    /// Decibels; infinite for equal images.
    double psnr;
};

/// Returns: the figures for a mean squared error. The peak is 2^bitsPerPixel - 1 as a 32-bit number
/// (Quirk 8: so it is -1 for 32 bits); the shift counts modulo 64.
ErrorFigures errorFigures(double mse, long bitsPerPixel);

/// Compares two raw files of the same geometry and prints their error figures on standard output.
/// A negative side is refused before anything is opened.
/// Returns: the exit status. Throws: 3 when a file is too short; std::bad_alloc.
int compareFiles(const CommandLine& line);

}  // namespace qmx
