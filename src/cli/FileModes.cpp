#include "cli/FileModes.h"

#include "cli/FatalErrors.h"
#include "container/CompressDriver.h"
#include "container/DecompressDriver.h"
#include "container/FileIo.h"
#include "container/SampleDispatch.h"

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

int compressFile(const CommandLine& line) {
    const RawGeometry& g = line.geometry;
    const TKHeader header = makeHeader(g.bytesPerPixel, g.bitsPerPixel, g.width, g.height);
    rememberGeometry(header);

    FilePtr raw(openNamed(line.inputName, "rb"));
    if (!raw) return 1;
    FilePtr stream(openNamed(line.otherName, "wb"));
    if (!stream) return 1;
    rememberRawInput(raw.get(), line.inputName);
    rememberOutput(line.otherName);
    writeAll(stream.get(), FileRole::output, &header, sizeof header);
    return dispatchSamples(
        header, MostBitsOfShort::inFiles,
        [&]<class T, class P>() {
            LossReport loss;
            const int status = compress<T, P>(header, raw.release(), stream.release(), line.rate,
                                              line.upper, line.extra, &loss);
            reportLoss(loss, line);
            return status;
        },
        [&] {
            closeOutput(std::move(stream));
            return refuseFormat();
        });
}

int decompressFile(const CommandLine& line) {
    FilePtr stream(openNamed(line.inputName, "rb"));
    if (!stream) return 1;
    FilePtr raw(openNamed(line.otherName, "wb"));
    if (!raw) return 1;
    rememberOutput(line.otherName);

    TKHeader header{};
    const std::size_t got = std::fread(&header, 1, sizeof header, stream.get());
    if (got < sizeof header.magic || !header.isRecognised()) {
        std::fprintf(stderr, "File %s not recognized\n", line.inputName);
        return 1;
    }
    rememberGeometry(header);
    return dispatchSamples(
        header, MostBitsOfShort::inFiles,
        [&]<class T, class P>() {
            return decompress<T, P>(header, stream.release(), raw.release(), line.upper,
                                    line.extra);
        },
        refuseFormat);
}

}  // namespace qmx
