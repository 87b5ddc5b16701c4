#include "convert/ConvertBatch.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <new>
#include <system_error>
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
        try {
            CConverter converter(options);
            for (std::size_t i = next++; i < jobs.size(); i = next++)
                take(i, converter.convert(jobs[i]));
        } catch (...) {
            const std::lock_guard lock(mutex);
            failure = std::current_exception();
        }
    }
    /// Requires: no thread works any more. Throws: what ended the work of a thread, std::bad_alloc most likely.
    int finish() {
        if (failure) std::rethrow_exception(failure);
        return report.finish();
    }

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
    std::exception_ptr failure;
};

unsigned threadCount(const ConvertOptions& options, std::size_t jobCount) {
    const unsigned wanted =
        options.jobs != 0 ? options.jobs : std::max(std::thread::hardware_concurrency(), 1U);
    return static_cast<unsigned>(std::min<std::size_t>(wanted, jobCount));
}

/// Begins as many threads as can be had: fewer take longer, and do the same.
void addThreads(CBatch& batch, unsigned count, std::vector<std::jthread>& threads) {
    try {
        for (unsigned i = 0; i < count; ++i)
            threads.emplace_back([&batch] { batch.work(); });
    } catch (const std::system_error&) {
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

int convertBatch(const std::vector<ConvertJob>& jobs, const ConvertOptions& options) {
    CBatch batch(jobs, options);
    {
        std::vector<std::jthread> others;
        addThreads(batch, threadCount(options, jobs.size()) - 1, others);
        batch.work();
    }
    return batch.finish();
}

}  // namespace qmx
