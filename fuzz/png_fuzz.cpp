// Any bytes as a PNG.

#include "ReaderFuzz.h"
#include "convert/PngReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::readAndWrite(data, size, qmx::FileFormat::png,
                       [](qmx::Buffer file, const qmx::ReadOptions& options) {
                           return qmx::readPng(file.view(), options);
                       });
    return 0;
}
