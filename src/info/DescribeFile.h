#pragma once

#include "info/InfoArguments.h"

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

/// Describes one file on standard output. What keeps it from that goes to standard error, and into a
/// document when JSON is asked for. Returns: the status of this file.
InfoStatus describeFile(const char* name, const InfoArguments& arguments);

}  // namespace qmx
