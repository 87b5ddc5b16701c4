// Any bytes as a TIFF.

#include "ReaderFuzz.h"
#include "convert/TiffReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::readAndWrite(data, size, qmx::FileFormat::tiff,
                       [](qmx::Buffer file, const qmx::ReadOptions& options) {
                           return qmx::readTiff(file.view(), options);
                       });
    return 0;
}
