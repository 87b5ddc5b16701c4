#pragma once

#include <string>

#include "convert/ConvertOptions.h"

namespace qmx {

enum class ConvertTask { convert, help, version, refuse };

struct ConvertArguments {
    ConvertTask task = ConvertTask::convert;
    ConvertOptions options;
    /// What is wrong with the arguments, for the task refuse.
    std::string complaint;
};

/// Options may stand between names; behind "--" there are only names.
ConvertArguments parseConvertArguments(int argc, const char* const* argv);

/// The text that --help prints.
extern const char kConvertHelp[];

}  // namespace qmx
