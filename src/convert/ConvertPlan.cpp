#include "convert/ConvertPlan.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "convert/CInputFile.h"
#include "convert/COutputFile.h"
#include "convert/Refusal.h"

namespace qmx {
namespace {

namespace fs = std::filesystem;

/// Returns: the one name that a file has, whichever way leads to its folder.
std::string oneNameOf(const fs::path& name) {
    std::error_code error;
    return (fs::weakly_canonical(fs::absolute(name, error).parent_path(), error) / name.filename())
        .string();
}

bool isRegularFile(const std::string& name) {
    std::error_code error;
    return fs::is_regular_file(name, error);
}

/// Collects the jobs of one call.
class CPlan {
public:
    explicit CPlan(const ConvertOptions& convertOptions) : options(convertOptions) {}

    void addInput(const std::string& input);
    std::vector<ConvertJob> take() { return std::move(jobs); }

private:
    void addFile(const std::string& name, const fs::path& belowFolder);
    void addFolder(const std::string& name);
    void collectFiles(const fs::path& folder, std::vector<fs::path>& paths);
    bool isWanted(bool isStreamFile) const;
    void requireOwnOutput(ConvertJob& job, bool isStreamFile);

    const ConvertOptions& options;
    std::vector<ConvertJob> jobs;
    std::unordered_map<std::string, std::string> inputsOfOutputs;
};

void CPlan::addInput(const std::string& input) {
    std::error_code error;
    if (options.isRecursive && fs::is_directory(input, error)) {
        addFolder(input);
    } else {
        addFile(input, fs::path(input).filename());
    }
}

/// Names are sorted, so that every run takes the files in the same order.
void CPlan::addFolder(const std::string& name) {
    std::vector<fs::path> paths;
    collectFiles(name, paths);
    std::sort(paths.begin(), paths.end());
    for (const fs::path& path : paths)
        addFile(path.string(), path.lexically_relative(name));
}

/// Links to folders are not followed: they may lead round. What cannot be read becomes a job that says so.
void CPlan::collectFiles(const fs::path& folder, std::vector<fs::path>& paths) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; entry != end; entry.increment(error)) {
        std::error_code unknown;
        const fs::path& path = entry->path();
        if (entry->is_directory(unknown) && !entry->is_symlink(unknown)) {
            collectFiles(path, paths);
        } else if (entry->is_regular_file(unknown) && !isPartName(path.filename().string())) {
            paths.push_back(path);
        }
    }
    if (!error) return;
    ConvertJob job;
    job.input = folder.string();
    job.complaint = "cannot be read: " + error.message();
    jobs.push_back(std::move(job));
}

bool CPlan::isWanted(bool isStreamFile) const {
    if (options.only == OnlyKind::images) return !isStreamFile;
    return options.only == OnlyKind::all || isStreamFile;
}

void CPlan::addFile(const std::string& name, const fs::path& belowFolder) {
    ConvertJob job;
    job.input = name;
    job.nameForOutput = options.folder ? (fs::path(*options.folder) / belowFolder).string() : name;
    if (options.output) job.output = namedOutput(*options.output);
    // What is read here must be there to be read once more. "-" is no name of a file.
    const bool isFile = name != "-" && isRegularFile(name);
    const bool isStreamFile =
        isFile && isStream(readHead(name, kStreamHeadBytes).value_or(Buffer()).view());
    if (isFile && !isWanted(isStreamFile)) return;
    if (isFile && !options.onlyChecks && !job.output) requireOwnOutput(job, isStreamFile);
    jobs.push_back(std::move(job));
}

void CPlan::requireOwnOutput(ConvertJob& job, bool isStreamFile) {
    try {
        const std::string output = derivedOutput(job.nameForOutput, isStreamFile).path;
        const auto [place, isNew] = inputsOfOutputs.emplace(oneNameOf(output), job.input);
        if (!isNew) job.complaint = "would have the same output as '" + place->second + "'";
    } catch (const Refusal& refusal) {
        job.complaint = refusal.words;
    }
}

}  // namespace

std::vector<ConvertJob> planConversion(const ConvertOptions& options) {
    CPlan plan(options);
    for (const std::string& input : options.inputs)
        plan.addInput(input);
    return plan.take();
}

}  // namespace qmx
