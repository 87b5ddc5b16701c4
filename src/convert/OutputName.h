#pragma once

#include <optional>
#include <string>

#include "convert/FileFormat.h"

namespace qmx {

/// Where an output goes, and in which format.
struct OutputName {
    /// Empty for the standard output.
    std::string path;
    FileFormat format = FileFormat::stream;

    bool isStandardOutput() const { return path.empty(); }
};

/// What an OUTPUT of the command line means: "scan.png", "png:scan", "png:-". Throws: Refusal where it has no
/// format, as "-" alone has none for an image.
OutputName namedOutput(const std::string& argument);

/// Returns: the name that the output of an input gets: scan.tif.tk for scan.tif, and scan.tif for the stream
/// scan.tif.tk. imageEnding: that of the images of streams, or empty for what their names say. Throws: Refusal where
/// that is no format.
OutputName derivedOutput(const std::string& input, bool isStreamInput,
                         const std::string& imageEnding = "");

}  // namespace qmx
