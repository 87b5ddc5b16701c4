#include "cli/FatalErrors.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace qmx {
namespace {

struct NamedFile {
    std::FILE* file = nullptr;
    const char* name = "";
};

struct Context {
    std::array<NamedFile, 2> files;
    RawGeometry geometry;
};

Context theContext;

/// Finds the file that made a stream or a row fail: its error or end-of-file mark is set.
void explainFailedFile() {
    const int reason = errno;
    const RawGeometry& g = theContext.geometry;
    for (const NamedFile& known : theContext.files) {
        if (known.file == nullptr) continue;
        if (std::ferror(known.file) != 0) {
            std::fprintf(stderr, "tesk: '%s': %s\n", known.name, std::strerror(reason));
            return;
        }
        if (std::feof(known.file) != 0) {
            std::fprintf(stderr, "tesk: '%s': too short for %ld x %ld pixels of %ld bytes\n",
                         known.name, g.width, g.height, g.bytesPerPixel);
            return;
        }
    }
    std::fprintf(stderr, "tesk: '%s': cannot be used\n", theContext.files.front().name);
}

[[noreturn]] void endProcess() {
    try {
        if (const auto thrown = std::current_exception()) std::rethrow_exception(thrown);
    } catch (int) {
        explainFailedFile();
    } catch (...) {
        std::fputs("tesk: unexpected error\n", stderr);
    }
    std::abort();
}

}  // namespace

void rememberFile(std::FILE* file, const char* name) {
    for (NamedFile& known : theContext.files) {
        if (known.file != nullptr) continue;
        known = {file, name};
        return;
    }
}

void rememberGeometry(const RawGeometry& geometry) {
    theContext.geometry = geometry;
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

void installFatalErrorHandler() {
    std::set_terminate(endProcess);
}

}  // namespace qmx
