#pragma once

#include <optional>
#include <string>
#include <vector>

#include "convert/OutputName.h"

namespace qmx {

/// One file to convert.
struct ConvertJob {
    std::string input;
    /// What the output's name is made from, where it has none of its own: the input's, or one in another folder.
    std::string nameForOutput;
    std::optional<OutputName> output;
    /// Why nothing can be done with it, found out before.
    std::string complaint;
};

enum class ConvertResult { converted, checked, passedOver, approximated, refused };

/// What became of a job.
struct ConvertOutcome {
    ConvertResult result = ConvertResult::refused;
    std::string input;
    /// Empty where there is none.
    std::string output;
    /// Words of the refusal.
    std::string refusal;
    std::vector<std::string> notes;
    /// A note says that metadata is not in the output.
    bool losesMetadata = false;
    /// Of the image and of its stream, without a trailer.
    std::uint64_t rawBytes = 0;
    std::uint64_t streamBytes = 0;
};

}  // namespace qmx
