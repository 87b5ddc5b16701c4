#pragma once

#include <optional>

namespace qmx {

enum class Action { compress, decompress, compare };

/// The geometry of a raw file as the command line gives it, not yet truncated to header fields.
struct RawGeometry {
    long bytesPerPixel = 0;
    /// Significant bits of one sample: 8 for an RGB image of 8-bit samples, not 24.
    long bitsPerPixel = 0;
    long width = 0;
    long height = 0;
};

/// What the arguments ask for.
struct CommandLine {
    Action action = Action::compress;
    /// The mode word's capital letter: build the stream, or read it, in memory.
    bool staged = false;
    /// The mode word's second letter c: work through the in-memory codec objects.
    bool inMemory = false;
    const char* inputName = nullptr;
    /// The output of compression and decompression, the second input of a comparison.
    const char* otherName = nullptr;
    RawGeometry geometry;
    double rate = 0.0;
    /// The optional last number, `extra` in the usage: above 0 a number of sections, below 0 a row.
    int rowOrSections = 0;
};

/// Returns: the request, or nothing when the mode word or the number of arguments is wrong. Numbers
/// are not checked: what is no number reads as 0.
std::optional<CommandLine> parseCommandLine(int argc, const char* const* argv);

/// Prints how to call the tool on standard output. Returns: status.
int usage(int status);

}  // namespace qmx
