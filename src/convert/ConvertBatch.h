#pragma once

#include <vector>

#include "convert/ConvertJob.h"
#include "convert/ConvertOptions.h"

namespace qmx {

/// Converts files, as many at a time as the options say, and reports on them in their order.
/// Returns: the exit status of the program. Throws: Refusal where the log cannot be opened.
int convertBatch(const std::vector<ConvertJob>& jobs, const ConvertOptions& options);

}  // namespace qmx
