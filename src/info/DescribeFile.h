#pragma once

#include "info/InfoArguments.h"
#include "info/StreamReport.h"

namespace qmx {

/// Exit statuses of tesk-info; of several files the largest counts. Documented in tesk-info(1).
enum class InfoStatus {
    fine = 0,
    cut = 1,
    invalid = 2,
    noStream = 3,
    unreadable = 4,
    outOfMemory = 5,
    outputLost = 6,
    wrongArguments = 7
};

/// Returns: what --check says of a stream. Requires: checkStream was called with report.
InfoStatus checkedStatusOf(const StreamReport& report);

/// Describes one file on standard output. What keeps it from that goes to standard error, and into a
/// document when JSON is asked for. Returns: the status of this file.
InfoStatus describeFile(const char* name, const InfoArguments& arguments);

}  // namespace qmx
