#include "convert/ConvertPlan.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "convert/COutputFile.h"
#include "convert/InputFile.h"
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
    std::error_code error;
    for (fs::recursive_directory_iterator entry(name, error), end; entry != end;
         entry.increment(error)) {
        const bool isFile = entry->is_regular_file(error);
        if (isFile && !isPartName(entry->path().filename().string()))
            paths.push_back(entry->path());
    }
    std::sort(paths.begin(), paths.end());
    for (const fs::path& path : paths)
        addFile(path.string(), path.lexically_relative(name));
    if (!error) return;
    ConvertJob job;
    job.input = name;
    job.complaint = "cannot be read as a whole: " + error.message();
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
    const bool isStreamFile = isFile && isStream(readHead(name, kStreamHeadBytes).view());
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
