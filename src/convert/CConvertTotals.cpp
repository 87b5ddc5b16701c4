#include "convert/CConvertTotals.h"

#include <cstdio>

namespace qmx {
namespace {

/// What is left is a guess until this much has passed.
constexpr double kSecondsBeforeGuess = 2;

std::string withUnit(double value, const char* format, const char* unit) {
    char words[64];
    std::snprintf(words, sizeof words, format, value);
    return std::string(words) + unit;
}

std::string withByteUnit(std::uint64_t count) {
    const auto bytes = static_cast<double>(count);
    if (count < 1'000'000) return withUnit(bytes / 1e3, "%.1f", " KB");
    if (count < 1'000'000'000) return withUnit(bytes / 1e6, "%.1f", " MB");
    return withUnit(bytes / 1e9, "%.1f", " GB");
}

std::string timeInWords(double seconds) {
    if (seconds < 100) return withUnit(seconds, "%.0f", " s");
    if (seconds < 6000) return withUnit(seconds / 60, "%.0f", " min");
    return withUnit(seconds / 3600, "%.1f", " h");
}

}  // namespace

void CConvertTotals::add(const ConvertOutcome& outcome) {
    ++done;
    passedOver += outcome.result == ConvertResult::passedOver ? 1 : 0;
    approximated += outcome.result == ConvertResult::approximated ? 1 : 0;
    if (outcome.result == ConvertResult::refused) {
        ++refused;
    } else {
        rawBytes += outcome.rawBytes;
        streamBytes += outcome.streamBytes;
    }
}

double CConvertTotals::ratio() const {
    return static_cast<double>(rawBytes) / static_cast<double>(streamBytes);
}

std::string CConvertTotals::progressWords(std::chrono::duration<double> elapsed) const {
    std::string words = std::to_string(done) + " of " + std::to_string(fileCount) + " files";
    if (streamBytes == 0) return words;
    words += ", " + withByteUnit(rawBytes) + ", " + withUnit(ratio(), "%.2f", ":1");
    const double seconds = elapsed.count();
    words += ", " + withUnit(static_cast<double>(rawBytes) / 1e6 / seconds, "%.0f", " MB/s");
    if (seconds < kSecondsBeforeGuess) return words;
    const std::size_t worked = done - passedOver;
    const double left =
        seconds * static_cast<double>(fileCount - done) / static_cast<double>(worked);
    return words + ", " + timeInWords(left) + " left";
}

std::string CConvertTotals::finalWords() const {
    const std::size_t good = done - refused - passedOver;
    std::string words = std::to_string(good) + " of " + std::to_string(fileCount) + " files";
    if (streamBytes != 0)
        words += ", " + withByteUnit(rawBytes) + " of pixels, " + withByteUnit(streamBytes) +
                 " of streams (" + withUnit(ratio(), "%.2f", ":1)");
    if (approximated != 0) words += ", " + std::to_string(approximated) + " approximations";
    if (passedOver != 0) words += ", " + std::to_string(passedOver) + " passed over";
    if (refused != 0) words += ", " + std::to_string(refused) + " refused";
    return words;
}

int CConvertTotals::exitStatus() const {
    if (refused != 0) return 1;
    return approximated != 0 ? 3 : 0;
}

}  // namespace qmx
