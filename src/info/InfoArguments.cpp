#include "info/InfoArguments.h"

#include <string_view>

namespace qmx {
namespace {

/// Returns: whether argument is an option that there is.
bool takeOption(std::string_view argument, InfoArguments& arguments) {
    if (argument == "--json") {
        arguments.asJson = true;
    } else if (argument == "--check") {
        arguments.decodes = true;
    } else if (argument == "--sections") {
        arguments.listsSections = true;
    } else if (argument == "--help") {
        arguments.task = InfoTask::help;
    } else if (argument == "--version") {
        arguments.task = InfoTask::version;
    } else {
        return false;
    }
    return true;
}

}  // namespace

const char kInfoHelp[] =
    "Usage: tesk-info [--sections] [--json] [--check] FILE...\n"
    "Describes streams of tesk; - is the standard input.\n"
    "\n"
    "  --sections  list all sections, too\n"
    "  --json      print a JSON document for each file, with all sections\n"
    "  --check     decode each stream, and tell by the exit status whether it has its end mark,\n"
    "              and behind it nothing, or a trailer whose checksum is right\n"
    "  --help      print this and exit\n"
    "  --version   print the version and exit\n"
    "\n"
    "Exit status, the largest of all files: 0 described (with --check: complete),\n"
    "1 cut, 2 invalid, doubtful or damaged (1 and 2 only with --check), 3 no stream or\n"
    "not supported, 4 cannot be read, 5 out of memory, 6 standard output cannot be\n"
    "written, 7 wrong arguments.\n";

InfoArguments parseInfoArguments(int argc, const char* const* argv) {
    InfoArguments arguments;
    bool onlyFiles = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool isFile = onlyFiles || argument == "-" || argument.substr(0, 1) != "-";
        if (isFile) {
            arguments.files.push_back(argv[i]);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (!takeOption(argument, arguments)) {
            arguments.complaint = "unknown option '" + std::string(argument) + "'";
        }
        // What only prints something about the program wins over all that follows.
        if (arguments.task != InfoTask::describe) return arguments;
    }
    if (arguments.complaint.empty() && arguments.files.empty())
        arguments.complaint = "no file is named";
    if (!arguments.complaint.empty()) arguments.task = InfoTask::refuse;
    return arguments;
}

}  // namespace qmx
