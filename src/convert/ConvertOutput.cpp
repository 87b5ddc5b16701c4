#include "convert/ConvertOutput.h"

#include <filesystem>
#include <unistd.h>

#include "convert/Refusal.h"

namespace qmx {
namespace {

namespace fs = std::filesystem;

void requireNoTerminal(const ConvertOptions& options) {
    if (isatty(STDOUT_FILENO) != 0 && !options.overwrites)
        throw Refusal{"its output would go to a terminal: -f lets it"};
}

void makeFolders(const fs::path& folder) {
    std::error_code error;
    if (!folder.empty()) fs::create_directories(folder, error);
    if (error) throw Refusal{"no folder '" + folder.string() + "': " + error.message()};
}

}  // namespace

OutputName outputOf(const ConvertJob& job, bool isStreamInput) {
    if (job.output) return *job.output;
    if (job.input != "-") return derivedOutput(job.nameForOutput, isStreamInput);
    if (isStreamInput)
        throw Refusal{"has no name to make that of an image from: name an OUTPUT, as png:-"};
    return {};
}

void requireOutput(const ConvertJob& job, const OutputName& output, const ConvertOptions& options) {
    std::error_code error;
    if (options.removesInputs && (output.isStandardOutput() || fs::is_other(output.path, error)))
        throw Refusal{"its output is no file, which --rm needs"};
    if (output.isStandardOutput()) return requireNoTerminal(options);
    if (job.input != "-" && fs::equivalent(job.input, output.path, error))
        throw Refusal{"is its own output"};
    if (!options.overwrites && fs::is_regular_file(output.path, error))
        requireFreeName(output.path);
    if (fs::is_directory(output.path, error))
        throw Refusal{"'" + output.path + "' is a folder: -d writes there"};
    if (options.folder) makeFolders(fs::path(output.path).parent_path());
}

}  // namespace qmx
