#pragma once

#include <cstdio>
#include <memory>

#include "convert/CConvertTotals.h"
#include "convert/ConvertOptions.h"

namespace qmx {

/// Says what becomes of files: lines on the standard error output, a line that stays on a terminal, and a log.
/// For one thread at a time.
class CConvertReport {
public:
    /// Throws: Refusal where the log cannot be opened.
    CConvertReport(const ConvertOptions& convertOptions, std::size_t fileCount);

    /// Says what became of a file.
    void tell(const ConvertOutcome& outcome);
    /// Shows how far the work is, a few times a second.
    void showProgress();
    /// Says what there is to say at the end. Returns: the exit status of the program.
    int finish();

private:
    using Clock = std::chrono::steady_clock;

    std::size_t shownNotes(const ConvertOutcome& outcome) const;
    void log(const ConvertOutcome& outcome);
    void clearProgress();

    const ConvertOptions& options;
    CConvertTotals totals;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> logFile;
    bool showsProgress;
    bool hasProgress = false;
    bool isLogLost = false;
    bool isBatch;
    Clock::time_point begin = Clock::now();
    Clock::time_point lastShown = begin;
};

}  // namespace qmx
