#pragma once

#include <vector>

#include "convert/ConvertJob.h"
#include "convert/ConvertOptions.h"

namespace qmx {

/// Returns: the files that the arguments name, those of folders in the order of their names. Two that would have the
/// same output, and those whose output is an input, get a complaint. Throws: Refusal where OUTPUT means nothing, or
/// outputs would go into a folder that is an input, or the log is one of these files, or no log.
std::vector<ConvertJob> planConversion(const ConvertOptions& options);

}  // namespace qmx
