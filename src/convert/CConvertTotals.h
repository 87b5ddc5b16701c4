#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "convert/ConvertJob.h"

namespace qmx {

/// What a batch has done so far, in words.
class CConvertTotals {
public:
    explicit CConvertTotals(std::size_t files) : fileCount(files) {}

    void add(const ConvertOutcome& outcome);
    /// Returns: a line for a terminal while work goes on.
    std::string progressWords(std::chrono::duration<double> elapsed) const;
    /// Returns: what there is to say at the end.
    std::string finalWords() const;
    /// Returns: the exit status of the program.
    int exitStatus() const;

private:
    double ratio() const;

    std::size_t fileCount;
    std::size_t done = 0;
    std::size_t passedOver = 0;
    std::size_t refused = 0;
    std::size_t approximated = 0;
    std::uint64_t rawBytes = 0;
    std::uint64_t streamBytes = 0;
};

}  // namespace qmx
