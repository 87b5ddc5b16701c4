#pragma once

#include <string>

namespace qmx {

/// Why a file is not converted. Thrown by whoever finds out; ends that file, never the program.
struct Refusal {
    /// What follows the name of the file and a colon.
    std::string words;
};

}  // namespace qmx
