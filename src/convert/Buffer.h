#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace qmx {

using ByteView = std::span<const unsigned char>;

/// Bytes on the heap. They have no values at first: images are large, and every one is written anyway.
struct Buffer {
    Buffer() = default;
    /// Throws: std::bad_alloc.
    explicit Buffer(std::size_t byteCount)
        : bytes(std::make_unique_for_overwrite<unsigned char[]>(byteCount)), sizeBytes(byteCount) {}

    ByteView view() const { return {bytes.get(), sizeBytes}; }

    std::unique_ptr<unsigned char[]> bytes;
    std::size_t sizeBytes = 0;
};

}  // namespace qmx
