// Any bytes as an array of NumPy.

#include <cstring>

#include "ReaderFuzz.h"
#include "convert/NpyReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The reader is asked only where these are there.
    constexpr std::size_t kMagicBytes = sizeof qmx::kNpyMagic - 1;
    if (size <= kMagicBytes || std::memcmp(data + 1, qmx::kNpyMagic, kMagicBytes) != 0) return 0;
    fuzz::readAndWrite(data, size, qmx::FileFormat::npy,
                       [](qmx::Buffer file, const qmx::ReadOptions& options) {
                           return qmx::readNpy(std::move(file), options);
                       });
    return 0;
}
