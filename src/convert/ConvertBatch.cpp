#include "convert/ConvertBatch.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <thread>

#include "convert/CConvertReport.h"
#include "convert/CConverter.h"

namespace qmx {
namespace {

/// Gives threads the next job, and reports on those that are done in their order.
class CBatch {
public:
    CBatch(const std::vector<ConvertJob>& convertJobs, const ConvertOptions& convertOptions)
        : jobs(convertJobs), options(convertOptions), report(convertOptions, convertJobs.size()) {}

    /// Works until no job is left. For any thread.
    void work() {
        CConverter converter(options);
        for (std::size_t i = next++; i < jobs.size(); i = next++)
            take(i, converter.convert(jobs[i]));
    }
    int finish() { return report.finish(); }

private:
    void take(std::size_t index, ConvertOutcome outcome) {
        const std::lock_guard lock(mutex);
        waiting.emplace(index, std::move(outcome));
        for (auto first = waiting.begin(); first != waiting.end() && first->first == told; ++told) {
            report.tell(first->second);
            first = waiting.erase(first);
        }
        report.showProgress();
    }

    const std::vector<ConvertJob>& jobs;
    const ConvertOptions& options;
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    /// Outcomes that come before those of earlier jobs.
    std::map<std::size_t, ConvertOutcome> waiting;
    std::size_t told = 0;
    CConvertReport report;
};

unsigned threadCount(const ConvertOptions& options, std::size_t jobCount) {
    const unsigned wanted =
        options.jobs != 0 ? options.jobs : std::max(std::thread::hardware_concurrency(), 1U);
    return static_cast<unsigned>(std::min<std::size_t>(wanted, jobCount));
}

}  // namespace

int convertBatch(const std::vector<ConvertJob>& jobs, const ConvertOptions& options) {
    CBatch batch(jobs, options);
    std::vector<std::thread> others;
    for (unsigned i = 1; i < threadCount(options, jobs.size()); ++i)
        others.emplace_back([&batch] { batch.work(); });
    batch.work();
    for (std::thread& other : others)
        other.join();
    return batch.finish();
}

}  // namespace qmx
