#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <new>
#include <type_traits>
#include <utility>

namespace qmx {

// What the codec works on comes from a memory resource that its owner names, so that an embedding
// program can place it, count it and refuse it. Without one it comes from new.

/// Returns: bytes as a size, which has 32 bits on wasm32. Throws: std::bad_alloc when it is too small.
inline std::size_t sizeOfBytes(std::uint64_t bytes) {
    if (!std::in_range<std::size_t>(bytes)) throw std::bad_alloc();
    return static_cast<std::size_t>(bytes);
}

template <class T>
struct ArrayRelease {
    std::pmr::memory_resource* memory = nullptr;
    std::size_t count = 0;
    void operator()(T* array) const noexcept {
        memory->deallocate(array, count * sizeof(T), alignof(T));
    }
};

/// Owns: an array of plain values.
template <class T>
using MemoryArray = std::unique_ptr<T[], ArrayRelease<T>>;

/// Returns: count values, uninitialised. Requires: memory outlives the array; count * sizeof(T) is
/// no more than the largest size. Throws: std::bad_alloc.
template <class T>
MemoryArray<T> makeArray(std::size_t count, std::pmr::memory_resource* memory) {
    static_assert(std::is_trivial_v<T>);
    auto* array = static_cast<T*>(memory->allocate(count * sizeof(T), alignof(T)));
    return MemoryArray<T>(array, {memory, count});
}

template <class T>
struct ObjectRelease {
    std::pmr::memory_resource* memory = nullptr;
    void operator()(T* object) const noexcept {
        std::pmr::polymorphic_allocator<>(memory).delete_object(object);
    }
};

/// Owns: an object.
template <class T>
using MemoryObject = std::unique_ptr<T, ObjectRelease<T>>;

/// Returns: a T made from arguments. Requires: memory outlives it. Throws: std::bad_alloc, and what
/// T's constructor throws.
template <class T, class... Arguments>
MemoryObject<T> makeObject(std::pmr::memory_resource* memory, Arguments&&... arguments) {
    std::pmr::polymorphic_allocator<> allocator(memory);
    return MemoryObject<T>(allocator.new_object<T>(std::forward<Arguments>(arguments)...),
                           {memory});
}

}  // namespace qmx
