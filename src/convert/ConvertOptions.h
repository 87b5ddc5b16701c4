#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "convert/ImageFile.h"
#include "convert/RawFile.h"

namespace qmx {

enum class OnlyKind { all, images, streams };

/// How long a stream may be; at most one of them is not 0.
struct StreamBudget {
    std::uint64_t bytes = 0;
    double rate = 0;
    double bitsPerSample = 0;

    bool isSet() const { return bytes != 0 || rate > 0 || bitsPerSample > 0; }
    /// Returns: bytes for an image, at least those of a header.
    std::size_t bytesFor(const ImageFile& image) const;
};

/// What the arguments of tesk-convert ask for.
struct ConvertOptions {
    /// In the order of the arguments. "-" is the standard input.
    std::vector<std::string> inputs;
    std::optional<std::string> output;

    std::optional<std::string> folder;
    /// Of the images that get no OUTPUT, without a dot; empty: what the names of their streams say.
    std::string imageEnding;
    bool isRecursive = false;
    OnlyKind only = OnlyKind::all;
    /// 0: one for each processor.
    unsigned jobs = 1;
    bool resumes = false;
    bool overwrites = false;
    bool removesInputs = false;

    std::optional<RawLayout> raw;
    StreamBudget budget;
    /// 0: found from the samples.
    unsigned bits = 0;
    bool isBare = false;
    bool dropsMetadata = false;
    bool isStrict = false;
    ReadOptions reading;

    std::uint32_t reduceLevels = 0;
    /// 0: no thumbnail.
    std::uint32_t thumbnailSide = 0;
    bool onlyChecks = false;

    std::optional<std::string> logFile;
    bool isQuiet = false;
    bool isVerbose = false;
};

}  // namespace qmx
