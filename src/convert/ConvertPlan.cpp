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

/// Returns: the name of a file or folder without links and dots, as far as it is there.
std::string canonicalName(const fs::path& name) {
    std::error_code error;
    return fs::weakly_canonical(fs::absolute(name, error), error).string();
}

bool isRegularFile(const std::string& name) {
    std::error_code error;
    return fs::is_regular_file(name, error);
}

bool hasStreamEnding(const std::string& name) {
    return formatOfName(name) == FileFormat::stream;
}

/// Whether a file or folder is a folder, or stands below it.
bool isWithin(const std::string& name, const std::string& folder) {
    const fs::path inner = canonicalName(name);
    const fs::path outer = canonicalName(folder);
    return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first ==
           outer.end();
}

/// Lines of a log begin with the year.
void requireLogContent(const std::string& log) {
    if (!isRegularFile(log)) return;
    const std::optional<Buffer> head = readHead(log, 1);
    if (!head || head->sizeBytes == 0) return;
    if (head->bytes[0] < '0' || head->bytes[0] > '9')
        throw Refusal{"'" + log + "' is there and no log: none begins so"};
}

/// Collects the jobs of one call.
class CPlan {
public:
    explicit CPlan(const ConvertOptions& convertOptions) : options(convertOptions) {}

    void addInput(const std::string& input);
    /// Returns: all jobs, when no input is to come any more.
    std::vector<ConvertJob> take();

private:
    void addFile(const std::string& name, const fs::path& belowFolder);
    void addFolder(const std::string& name);
    void collectFiles(const fs::path& folder, std::vector<fs::path>& paths);
    bool isWanted(const std::string& name, bool isStreamFile) const;
    void requireOwnOutput(ConvertJob& job, bool isStreamFile);
    void addInputNames(const std::string& name);
    std::string oneNameOf(const fs::path& name);
    void requireNoInput(const std::string& output, ConvertJob& job) const;
    void requireOwnLog(const std::string& log);

    const ConvertOptions& options;
    std::vector<ConvertJob> jobs;
    /// Outputs by their one name: numbers of jobs.
    std::unordered_map<std::string, std::size_t> jobsOfOutputs;
    /// Inputs by all their names: those that links have, and those of the files that they lead to.
    std::unordered_map<std::string, std::string> inputsOfNames;
    /// Names of folders without links: many files are in one.
    std::unordered_map<std::string, std::string> canonicalFolders;
};

/// Returns: the one name that a file has, whichever way leads to its folder.
std::string CPlan::oneNameOf(const fs::path& name) {
    const auto [folder, isNew] = canonicalFolders.try_emplace(name.parent_path().string());
    if (isNew) folder->second = canonicalName(fs::path(".") / name.parent_path());
    return (fs::path(folder->second) / name.filename()).string();
}

/// A link has two names: its own, and that of the file it leads to.
void CPlan::addInputNames(const std::string& name) {
    std::error_code error;
    inputsOfNames.emplace(oneNameOf(name), name);
    if (fs::is_symlink(name, error)) inputsOfNames.emplace(canonicalName(name), name);
}

void CPlan::addInput(const std::string& input) {
    std::error_code error;
    if (options.isRecursive && fs::is_directory(input, error)) {
        if (options.folder && isWithin(*options.folder, input))
            throw Refusal{"the output folder '" + *options.folder + "' is in the input folder '" +
                          input + "': the next run would take its outputs for inputs"};
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

/// Streams whose first bytes are damaged are known by their names.
bool CPlan::isWanted(const std::string& name, bool isStreamFile) const {
    if (options.only == OnlyKind::images) return !isStreamFile;
    return options.only == OnlyKind::all || isStreamFile || hasStreamEnding(name);
}

void CPlan::addFile(const std::string& name, const fs::path& belowFolder) {
    ConvertJob job;
    job.input = name;
    job.nameForOutput = options.folder ? (fs::path(*options.folder) / belowFolder).string() : name;
    if (options.output) job.output = namedOutput(*options.output);
    // What is read here must be there to be read once more. "-" is no name of a file.
    const bool isFile = name != "-" && isRegularFile(name);
    const std::optional<Buffer> head =
        isFile ? readHead(name, kStreamHeadBytes) : std::optional<Buffer>();
    const bool isStreamFile = head && isStream(head->view());
    if (head && !isWanted(name, isStreamFile)) return;
    if (head && !isStreamFile && options.only == OnlyKind::streams) {
        job.complaint = "is no stream";
    } else if (isFile && !options.onlyChecks && !job.output) {
        requireOwnOutput(job, isStreamFile);
    }
    if (isFile) addInputNames(name);
    jobs.push_back(std::move(job));
}

void CPlan::requireOwnOutput(ConvertJob& job, bool isStreamFile) {
    try {
        const std::string output =
            derivedOutput(job.nameForOutput, isStreamFile, options.imageEnding).path;
        const auto [place, isNew] = jobsOfOutputs.emplace(oneNameOf(output), jobs.size());
        if (!isNew)
            job.complaint = "would have the same output as '" + jobs[place->second].input + "'";
    } catch (const Refusal& refusal) {
        job.complaint = refusal.words;
    }
}

std::vector<ConvertJob> CPlan::take() {
    if (options.logFile) {
        requireOwnLog(*options.logFile);
        requireLogContent(*options.logFile);
    }
    // With --resume such outputs are there, and are passed over.
    if (options.resumes) return std::move(jobs);
    for (const auto& [output, number] : jobsOfOutputs)
        requireNoInput(output, jobs[number]);
    return std::move(jobs);
}

void CPlan::requireOwnLog(const std::string& log) {
    for (const std::string& name : {oneNameOf(log), canonicalName(log)}) {
        const bool isNamed = options.output && oneNameOf(namedOutput(*options.output).path) == name;
        if (isNamed || jobsOfOutputs.contains(name))
            throw Refusal{"the log '" + log + "' would be an output, too"};
        if (inputsOfNames.contains(name)) throw Refusal{"the log '" + log + "' is an input, too"};
    }
}

/// Which of two jobs came first would decide what is converted.
void CPlan::requireNoInput(const std::string& output, ConvertJob& job) const {
    const auto place = inputsOfNames.find(output);
    if (!job.complaint.empty() || place == inputsOfNames.end()) return;
    job.complaint = "its output would be the input '" + place->second + "'";
}

}  // namespace

std::vector<ConvertJob> planConversion(const ConvertOptions& options) {
    CPlan plan(options);
    for (const std::string& input : options.inputs)
        plan.addInput(input);
    return plan.take();
}

}  // namespace qmx
