#pragma once

#include <string>
#include <vector>

namespace qmx {

enum class InfoTask { describe, help, version, refuse };

/// What the arguments of tesk-info ask for.
struct InfoArguments {
    InfoTask task = InfoTask::describe;
    bool asJson = false;
    bool decodes = false;
    bool listsSections = false;
    /// Names of files; "-" is the standard input.
    std::vector<const char*> files;
    /// What is wrong with the arguments, for the task refuse.
    std::string complaint;
};

/// Options may stand between files; behind "--" there are only files.
InfoArguments parseInfoArguments(int argc, const char* const* argv);

/// The text that --help prints.
extern const char kInfoHelp[];

}  // namespace qmx
