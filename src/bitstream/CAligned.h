#pragma once

#include <cstddef>

namespace qmx {

/// Storage of at least sizeBytes bytes whose address is a multiple of alignmentBytes.
/// Requires: alignmentBytes is a power of two and at least sizeof(void*).
/// Returns: the storage, or null when there is none.
/// Owns: the caller, who releases it with std::free.
void* allocateAligned(std::size_t alignmentBytes, std::size_t sizeBytes) noexcept;

/// Base of every object that must stand at a multiple of Alignment bytes on the heap.
/// Throws: std::bad_alloc from new when there is no storage.
template <std::size_t Alignment>
class CAligned {
public:
    static void* operator new(std::size_t sizeBytes);
    static void operator delete(void* storage) noexcept;
};

extern template class CAligned<8>;

}  // namespace qmx
