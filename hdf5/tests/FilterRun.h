#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "ChunkValues.h"
#include "H5Ztesk.h"

// Calls of the filter as HDF5 makes them, with blocks of HDF5's memory.

namespace hdf5 {

using Bytes = std::vector<unsigned char>;
using Values = std::array<unsigned, kChunkValueCount>;

inline Values valuesOf(const ChunkValues& chunk) {
    Values values;
    writeChunkValues(&chunk, values.data());
    return values;
}

/// Returns: samples that compress, the same ones each time; with noise, some that do not.
inline Bytes samplesOf(const ChunkValues& chunk, bool noise = false) {
    std::mt19937 random(7);
    Bytes bytes(rawBytes(&chunk));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::size_t sample = i / chunk.bytesPerPixel;
        const auto slow = (sample % chunk.columns + sample / chunk.columns) / 8;
        const bool isLowByte = chunk.bytesPerPixel != 2 || i % 2 == 0;
        bytes[i] = static_cast<unsigned char>(noise       ? random()
                                              : isLowByte ? slow + random() % 4
                                                          : 1);
    }
    return bytes;
}

/// What a call left behind.
struct Outcome {
    std::size_t returned;
    std::size_t bufferBytes;
    bool sameBlock;  ///< the block that was given still stands there
    Bytes bytes;     ///< what stands there: as many bytes as were returned, or as were given
};

/// Runs the filter on bytes in a block that is longer than they are by slack bytes of 0x55.
inline Outcome run(unsigned flags, const Values& values, const Bytes& bytes, std::size_t slack = 0,
                   std::size_t valueCount = kChunkValueCount) {
    H5Eclear2(H5E_DEFAULT);
    std::size_t bufferBytes = bytes.size() + slack;
    void* block = H5allocate_memory(bufferBytes + 1, false);
    void* const given = block;
    std::memset(block, 0x55, bufferBytes + 1);
    std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(block));
    const std::size_t returned =
        kTeskFilter.filter(flags, valueCount, values.data(), bytes.size(), &bufferBytes, &block);
    const auto* now = static_cast<const unsigned char*>(block);
    Outcome outcome{returned, bufferBytes, block == given,
                    Bytes(now, now + (returned != 0 ? returned : bytes.size()))};
    H5free_memory(block);
    return outcome;
}

inline Outcome encode(const ChunkValues& chunk, const Bytes& samples, unsigned flags = 0) {
    return run(flags, valuesOf(chunk), samples);
}

inline Outcome decode(const ChunkValues& chunk, const Bytes& stream) {
    return run(H5Z_FLAG_REVERSE, valuesOf(chunk), stream);
}

/// Returns: the words of the innermost error on HDF5's stack, which is cleared.
inline std::string takeError() {
    std::string words;
    H5Ewalk2(
        H5E_DEFAULT, H5E_WALK_UPWARD,
        [](unsigned level, const H5E_error2_t* error, void* user) {
            if (level == 0) *static_cast<std::string*>(user) = error->desc;
            return herr_t{0};
        },
        &words);
    H5Eclear2(H5E_DEFAULT);
    return words;
}

}  // namespace hdf5
