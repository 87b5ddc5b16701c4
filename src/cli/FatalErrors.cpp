#include "cli/FatalErrors.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "bitstream/Status.h"

namespace qmx {
namespace {

struct NamedFile {
    std::FILE* file = nullptr;
    const char* name = "";
};

struct Context {
    std::array<NamedFile, 2> rawInputs;
    const char* outputName = "";
    RawGeometry geometry;
};

Context theContext;

void explainOutput(int errorNumber) {
    std::fprintf(stderr, "tesk: cannot write '%s': %s\n", theContext.outputName,
                 std::strerror(errorNumber));
}

/// Finds the raw file that ended too early: its end-of-file or error mark is set.
/// Returns: whether there is one.
bool explainRawInput(int errorNumber) {
    const RawGeometry& g = theContext.geometry;
    for (const NamedFile& input : theContext.rawInputs) {
        if (input.file == nullptr) continue;
        if (std::ferror(input.file) != 0) {
            std::fprintf(stderr, "tesk: cannot read '%s': %s\n", input.name,
                         std::strerror(errorNumber));
            return true;
        }
        if (std::feof(input.file) != 0) {
            std::fprintf(stderr, "tesk: '%s': too short for %ld x %ld pixels of %ld bytes\n",
                         input.name, g.width, g.height, g.bytesPerPixel);
            return true;
        }
    }
    return false;
}

/// An end that is met is that of a raw file, which is then still open, or that of the room for
/// output. A failed write is met after raw files have been closed.
void explainThrownNumber(int number, int errorNumber) {
    if (number == kThrownEndOfStream && explainRawInput(errorNumber)) return;
    explainOutput(errorNumber);
}

[[noreturn]] void endProcess() {
    const int errorNumber = errno;
    try {
        if (const auto thrown = std::current_exception()) std::rethrow_exception(thrown);
    } catch (int number) {
        explainThrownNumber(number, errorNumber);
    } catch (...) {
        std::fputs("tesk: unexpected error\n", stderr);
    }
    std::abort();
}

}  // namespace

void rememberRawInput(std::FILE* file, const char* name) {
    for (NamedFile& input : theContext.rawInputs) {
        if (input.file != nullptr) continue;
        input = {file, name};
        return;
    }
}

void rememberOutput(const char* name) {
    theContext.outputName = name;
}

void rememberGeometry(const RawGeometry& geometry) {
    theContext.geometry = geometry;
}

void rememberGeometry(const TKHeader& header) {
    rememberGeometry(
        RawGeometry{header.bytesPerPixel, header.bitsPerPixel, header.xSize, header.ySize});
}

void reportDecompressionError(int result, const CommandLine& line) {
    std::fprintf(stderr, "tesk: cannot decompress '%s': error %d, '%s' stays empty\n",
                 line.inputName, result, line.otherName);
}

void reportLoss(const LossReport& report, const CommandLine& line) {
    if (report.loss == Loss::none) return;
    const std::string reason = describeLoss(report);
    switch (report.reading) {
        case Reading::whole:
        case Reading::part:
            std::fprintf(stderr, "tesk: warning: '%s' will not restore '%s' exactly: %s\n",
                         line.otherName, line.inputName, reason.c_str());
            break;
        case Reading::wrong:
            std::fprintf(stderr, "tesk: warning: '%s' decodes to another image: %s\n",
                         line.otherName, reason.c_str());
            break;
        case Reading::refused:
            std::fprintf(stderr, "tesk: warning: '%s' cannot be decoded: %s\n", line.otherName,
                         reason.c_str());
            break;
    }
}

int reportFileError(const FileError& error, const CommandLine& line) {
    const char* reason = std::strerror(error.errorNumber);
    switch (error.role) {
        case FileRole::input:
            std::fprintf(stderr, "tesk: cannot read '%s': %s\n", line.inputName, reason);
            break;
        case FileRole::output:
            std::fprintf(stderr, "tesk: cannot write '%s': %s\n", line.otherName, reason);
            break;
        case FileRole::temporary:
            std::fprintf(stderr, "tesk: cannot copy '%s' to a temporary file: %s\n", line.inputName,
                         reason);
            break;
    }
    return 1;
}

int reportOutOfMemory() {
    const RawGeometry& g = theContext.geometry;
    std::fprintf(stderr, "Out of memory: %ld x %ld pixels of %ld bytes\n", g.width, g.height,
                 g.bytesPerPixel);
    return 1;
}

int reportLostResult() {
    std::fprintf(stderr, "tesk: cannot write standard output: %s\n", std::strerror(errno));
    return 1;
}

int reportImpossibleSize() {
    const RawGeometry& g = theContext.geometry;
    std::fprintf(stderr, "tesk: no image has %ld x %ld pixels\n", g.width, g.height);
    return 1;
}

void installFatalErrorHandler() {
    std::set_terminate(endProcess);
}

}  // namespace qmx
