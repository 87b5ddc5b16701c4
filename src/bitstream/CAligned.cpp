#include "bitstream/CAligned.h"

#include <cstdlib>
#include <new>

namespace qmx {

void* allocateAligned(std::size_t alignmentBytes, std::size_t sizeBytes) noexcept {
    void* storage = nullptr;
    return posix_memalign(&storage, alignmentBytes, sizeBytes) == 0 ? storage : nullptr;
}

template <std::size_t Alignment>
void* CAligned<Alignment>::operator new(std::size_t sizeBytes) {
    void* storage = allocateAligned(Alignment, sizeBytes);
    if (storage == nullptr) throw std::bad_alloc();
    return storage;
}

template <std::size_t Alignment>
void CAligned<Alignment>::operator delete(void* storage) noexcept {
    std::free(storage);
}

template class CAligned<8>;

}  // namespace qmx
