#include "convert/ConvertOutput.h"

#include <filesystem>
#include <mutex>
#include <unistd.h>
#include <vector>

#include "convert/Refusal.h"

namespace qmx {
namespace {

namespace fs = std::filesystem;

void requireNoTerminal(const ConvertOptions& options) {
    if (isatty(STDOUT_FILENO) != 0 && !options.overwrites)
        throw Refusal{"its output would go to a terminal: -f lets it"};
}

/// Returns: those of the folder and of the folders above it that are not there, the uppermost first.
std::vector<fs::path> missingFolders(fs::path folder) {
    std::vector<fs::path> missing;
    std::error_code error;
    for (; !folder.empty() && !fs::exists(folder, error); folder = folder.parent_path())
        missing.insert(missing.begin(), folder);
    return missing;
}

/// Another thread must not take a folder for one that reached the disk before it has.
void makeFolders(const fs::path& folder, bool reachDisk) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    std::error_code error;
    const std::vector<fs::path> missing = missingFolders(folder);
    if (!folder.empty()) fs::create_directories(folder, error);
    if (error) throw Refusal{"no folder '" + folder.string() + "': " + error.message()};
    if (!reachDisk) return;
    for (const fs::path& made : missing)
        syncFolder(made.has_parent_path() ? made.parent_path().string() : ".");
}

}  // namespace

OutputName outputOf(const ConvertJob& job, bool isStreamInput, const ConvertOptions& options) {
    if (job.output) return *job.output;
    if (job.input != "-")
        return derivedOutput(job.nameForOutput, isStreamInput, options.imageEnding);
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
    if (options.folder) makeFolders(fs::path(output.path).parent_path(), options.removesInputs);
}

OutputRules outputRules(const struct stat& inputFacts, const ConvertOptions& options) {
    OutputRules rules{options.overwrites, options.removesInputs};
    if (!S_ISREG(inputFacts.st_mode)) return rules;
    rules.permissions = inputFacts.st_mode & 0777;
    if (options.removesInputs) rules.times = {inputFacts.st_atim, inputFacts.st_mtim};
    return rules;
}

}  // namespace qmx
