#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "convert/Buffer.h"

namespace qmx {

/// What stands in front of the samples of a .npy file.
struct NpyHead {
    /// "<u2": byte order, kind and bytes of a sample.
    std::string type;
    bool isFortranOrder = false;
    std::vector<std::uint64_t> shape;
    /// Where the samples begin in the file.
    std::size_t startByte = 0;
};

/// Requires: file begins with kNpyMagic. Throws: Refusal.
NpyHead readNpyHead(ByteView file);

}  // namespace qmx
