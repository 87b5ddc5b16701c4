#pragma once

#include <vector>

#include "convert/ConvertJob.h"
#include "convert/ConvertOptions.h"

namespace qmx {

/// Returns: the files that the arguments name, those of folders in the order of their names. Two that would have the
/// same output get a complaint. Throws: Refusal where OUTPUT means nothing.
std::vector<ConvertJob> planConversion(const ConvertOptions& options);

}  // namespace qmx
