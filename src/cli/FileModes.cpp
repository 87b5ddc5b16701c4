#include "cli/FileModes.h"

#include <sys/stat.h>

#include "cli/FatalErrors.h"
#include "cli/RawSurplus.h"
#include "container/CoefficientDispatch.h"
#include "container/CompressDriver.h"
#include "container/DecompressDriver.h"
#include "container/FileIo.h"

namespace qmx {

int refuseFormat() {
    std::fputs("Image format not supported\n", stderr);
    return 0;  // Quirk 7: not an error for the caller's shell
}

std::FILE* openNamed(const char* name, const char* mode) {
    std::FILE* file = std::fopen(name, mode);
    if (file == nullptr) std::fprintf(stderr, "Cannot open '%s'\n", name);
    return file;
}

namespace {

/// Returns: whether a name leads to the regular file that is open.
bool isNameOf(const char* name, std::FILE* file) {
    struct stat named {};
    struct stat open {};
    if (stat(name, &named) != 0 || fstat(fileno(file), &open) != 0) return false;
    return S_ISREG(named.st_mode) && named.st_dev == open.st_dev && named.st_ino == open.st_ino;
}

}  // namespace

bool openJobFiles(const CommandLine& line, JobFiles& files) {
    files.input.reset(openNamed(line.inputName, "rb"));
    if (!files.input) return false;
    if (isNameOf(line.otherName, files.input.get())) {
        std::fprintf(stderr, "tesk: '%s' is the input file\n", line.otherName);
        return false;
    }
    files.output.reset(openNamed(line.otherName, "wb"));
    rememberOutput(line.otherName);
    return files.output != nullptr;
}

int compressFile(const CommandLine& line) {
    const RawGeometry& g = line.geometry;
    const TKHeader header = makeHeader(g.bytesPerPixel, g.bitsPerPixel, g.width, g.height);
    rememberGeometry(header);

    JobFiles files;
    if (!openJobFiles(line, files)) return 1;
    rememberRawInput(files.input.get(), line.inputName);
    writeAll(files.output.get(), FileRole::output, &header, sizeof header);
    return dispatchCoefficients(
        header, MostBitsOfShort::inFiles,
        [&]<class T>() {
            reportSurplus(files.input.get(), line.inputName, header);
            const LossReport loss =
                compress<T>(header, files.input.release(), files.output.release(), line.rate,
                            line.staged, line.rowOrSections);
            reportLoss(loss, line);
            return 0;
        },
        [&] {
            closeOutput(std::move(files.output));
            return refuseFormat();
        });
}

int decompressFile(const CommandLine& line) {
    JobFiles files;
    if (!openJobFiles(line, files)) return 1;
    TKHeader header{};
    const std::size_t got = std::fread(&header, 1, sizeof header, files.input.get());
    if (got < sizeof header.magic || !header.isRecognised()) {
        std::fprintf(stderr, "File %s not recognized\n", line.inputName);
        return 1;
    }
    rememberGeometry(header);
    return dispatchCoefficients(
        header, MostBitsOfShort::inFiles,
        [&]<class T>() {
            return decompress<T>(header, files.input.release(), files.output.release(), line.staged,
                                 line.rowOrSections);
        },
        refuseFormat);
}

}  // namespace qmx
