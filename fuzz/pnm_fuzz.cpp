// Any bytes as a PNM or PAM file.

#include "ReaderFuzz.h"
#include "convert/PnmReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The reader is asked only where these are there.
    const bool isPnm = size > 3 && data[1] == 'P' && data[2] >= '1' && data[2] <= '7';
    if (!isPnm) return 0;
    fuzz::readAndWrite(data, size, qmx::FileFormat::pnm,
                       [](qmx::Buffer file, const qmx::ReadOptions& options) {
                           return qmx::readPnm(std::move(file), options);
                       });
    return 0;
}
