// Memory of the fuzz targets: no single allocation is large, so that a header which asks for
// gigabytes meets a refusal instead of the machine's limits, and the way out of it is fuzzed too.

#include "FuzzMemory.h"

#include <cstdlib>
#include <new>

namespace {

bool isLimited = false;

}  // namespace

void* operator new(std::size_t sizeBytes) {
    void* memory = isLimited ? fuzz::limitedMalloc(sizeBytes) : std::malloc(sizeBytes);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void* operator new(std::size_t sizeBytes, std::align_val_t) {
    // No type of the codec needs more than malloc gives.
    return operator new(sizeBytes);
}
void* operator new[](std::size_t sizeBytes) {
    return operator new(sizeBytes);
}
void* operator new(std::size_t sizeBytes, const std::nothrow_t&) noexcept {
    return std::malloc(sizeBytes);
}
void* operator new[](std::size_t sizeBytes, const std::nothrow_t&) noexcept {
    return std::malloc(sizeBytes);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace fuzz {

MemoryLimit::MemoryLimit() {
    isLimited = true;
}

MemoryLimit::~MemoryLimit() {
    isLimited = false;
}

void* limitedMalloc(std::size_t sizeBytes) {
    return sizeBytes > kLargestAllocationBytes ? nullptr
                                               : std::malloc(sizeBytes == 0 ? 1 : sizeBytes);
}

}  // namespace fuzz
