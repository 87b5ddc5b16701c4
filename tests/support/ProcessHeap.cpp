#include "support/ProcessHeap.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace test {

thread_local ProcessHeap processHeap;

namespace {

/// Returns: whether this allocation may succeed.
bool admit() {
    if (!processHeap.isWatched) return true;
    const std::size_t number = processHeap.allocations++;
    return number < processHeap.failFrom ||
           (processHeap.failsOnce && number > processHeap.failFrom);
}

void* took(void* memory, std::size_t sizeBytes) {
    if (!processHeap.isWatched || memory == nullptr) return memory;
    processHeap.mostLive = std::max(processHeap.mostLive, ++processHeap.live);
    processHeap.largestBytes = std::max(processHeap.largestBytes, sizeBytes);
    return memory;
}

}  // namespace
}  // namespace test

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
int __real_posix_memalign(void** memory, std::size_t alignment, std::size_t size);
void __real_free(void* memory);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
int __wrap_posix_memalign(void** memory, std::size_t alignment, std::size_t size);
void __wrap_free(void* memory);

void* __wrap_malloc(std::size_t size) {
    return test::admit() ? test::took(__real_malloc(size), size) : nullptr;
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return test::admit() ? test::took(__real_calloc(count, size), count * size) : nullptr;
}
int __wrap_posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    if (!test::admit()) return ENOMEM;
    const int error = __real_posix_memalign(memory, alignment, size);
    if (error == 0) test::took(*memory, size);
    return error;
}
void __wrap_free(void* memory) {
    if (test::processHeap.isWatched && memory != nullptr) --test::processHeap.live;
    __real_free(memory);
}
}

// Not inlined: the compiler would see new memory go to free, and warn.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* memory = std::malloc(size != 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, std::align_val_t alignment) {
    void* memory = nullptr;
    const auto bytes = std::max(sizeof(void*), static_cast<std::size_t>(alignment));
    if (posix_memalign(&memory, bytes, size) == 0) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
