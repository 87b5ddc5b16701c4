#include "convert/CConvertReport.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include "convert/Refusal.h"
#include "info/JsonString.h"

namespace qmx {
namespace {

constexpr std::chrono::milliseconds kProgressInterval{200};

const char* wordOf(ConvertResult result) {
    switch (result) {
        case ConvertResult::converted:
            return "converted";
        case ConvertResult::checked:
            return "checked";
        case ConvertResult::passedOver:
            return "passed over";
        case ConvertResult::approximated:
            return "approximated";
        case ConvertResult::refused:
            return "refused";
    }
    return "";
}

std::FILE* openLog(const ConvertOptions& options) {
    if (!options.logFile) return nullptr;
    std::FILE* file = std::fopen(options.logFile->c_str(), "a");
    if (file == nullptr)
        throw Refusal{"cannot write the log '" + *options.logFile + "': " + std::strerror(errno)};
    return file;
}

std::string timeOfDay() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    char words[32];
    std::strftime(words, sizeof words, "%Y-%m-%dT%H:%M:%SZ", gmtime_r(&now, &parts));
    return words;
}

void printLine(const std::string& name, const std::string& words) {
    std::fprintf(stderr, "tesk-convert: %s: %s\n", onOneLine(name).c_str(),
                 onOneLine(words).c_str());
}

/// What -v says of a file.
std::string describe(const ConvertOutcome& outcome) {
    std::string words = wordOf(outcome.result);
    if (!outcome.output.empty()) words += ", " + outcome.output;
    if (outcome.streamBytes == 0) return words;
    char ratio[32];
    std::snprintf(ratio, sizeof ratio, "%.2f:1",
                  static_cast<double>(outcome.rawBytes) / static_cast<double>(outcome.streamBytes));
    return words + ", " + std::to_string(outcome.rawBytes) + " bytes of pixels, " +
           std::to_string(outcome.streamBytes) + " of stream, " + ratio;
}

}  // namespace

CConvertReport::CConvertReport(const ConvertOptions& convertOptions, std::size_t fileCount)
    : options(convertOptions),
      totals(fileCount),
      logFile(openLog(convertOptions), std::fclose),
      showsProgress(fileCount > 1 && !options.isQuiet && isatty(STDERR_FILENO) != 0),
      isBatch(fileCount > 1) {}

void CConvertReport::tell(const ConvertOutcome& outcome) {
    totals.add(outcome);
    if (logFile) log(outcome);
    const std::size_t noteCount = shownNotes(outcome);
    if (outcome.result == ConvertResult::refused || options.isVerbose || noteCount > 0)
        clearProgress();
    for (std::size_t i = 0; i < noteCount; ++i)
        printLine(outcome.input, "note: " + outcome.notes[i]);
    if (outcome.result == ConvertResult::refused) {
        printLine(outcome.input, outcome.refusal);
    } else if (options.isVerbose) {
        printLine(outcome.input, describe(outcome));
    }
}

/// The first note on what became an approximation is why: no other word would explain the status.
std::size_t CConvertReport::shownNotes(const ConvertOutcome& outcome) const {
    if (!options.isQuiet) return outcome.notes.size();
    const bool isApproximated = outcome.result == ConvertResult::approximated;
    return isApproximated ? std::min<std::size_t>(outcome.notes.size(), 1) : 0;
}

void CConvertReport::log(const ConvertOutcome& outcome) {
    std::string words = outcome.refusal;
    for (const std::string& note : outcome.notes)
        words += (words.empty() ? "" : "; ") + note;
    std::fprintf(logFile.get(), "%s\t%s\t%s\t%s\t%llu\t%llu\t%s\n", timeOfDay().c_str(),
                 wordOf(outcome.result), onOneLine(outcome.input).c_str(),
                 onOneLine(outcome.output).c_str(),
                 static_cast<unsigned long long>(outcome.rawBytes),
                 static_cast<unsigned long long>(outcome.streamBytes), onOneLine(words).c_str());
    // A line that is not there after a crash is no log.
    if (std::fflush(logFile.get()) != 0) isLogLost = true;
}

void CConvertReport::clearProgress() {
    if (hasProgress) std::fputs("\r\033[K", stderr);
    hasProgress = false;
}

void CConvertReport::showProgress() {
    const Clock::time_point now = Clock::now();
    if (!showsProgress || now - lastShown < kProgressInterval) return;
    lastShown = now;
    std::fprintf(stderr, "\r\033[K%s", totals.progressWords(now - begin).c_str());
    hasProgress = true;
}

int CConvertReport::finish() {
    clearProgress();
    if (isBatch && !options.isQuiet)
        std::fprintf(stderr, "tesk-convert: %s\n", totals.finalWords().c_str());
    if (!isLogLost) return totals.exitStatus();
    std::fprintf(stderr, "tesk-convert: the log '%s' could not be written\n",
                 onOneLine(*options.logFile).c_str());
    return 1;
}

}  // namespace qmx
