#pragma once

#include <cstddef>
#include <memory_resource>

namespace qmx {

/// The caller's allocator, or malloc and free.
struct AllocatorHooks {
    void* (*allocate)(void* user, std::size_t sizeBytes);
    void (*release)(void* user, void* memory);
    void* user;
};

/// Returns: hooks that go to malloc and free.
AllocatorHooks defaultHooks();

/// The memory of one call: comes from the caller's allocator, is counted, and ends at a limit.
class CCallMemory final : public std::pmr::memory_resource {
public:
    /// limitBytes: most bytes held at one time; 0 for no limit. Requires: hooks work until all that
    /// was allocated has been released.
    CCallMemory(const AllocatorHooks& callHooks, std::size_t limitBytes);

    /// Returns: the most bytes that were held at one time.
    std::size_t peakBytes() const { return peak; }
    /// Returns: whether an allocation was refused because of the limit.
    bool limitReached() const { return refused; }
    /// Returns: whether sizeBytes bytes more would stay inside the limit.
    bool allows(std::size_t sizeBytes) const { return sizeBytes <= limit - held; }

private:
    /// Throws: std::bad_alloc. Requires: no more than the alignment of malloc.
    void* do_allocate(std::size_t sizeBytes, std::size_t alignmentBytes) override;
    void do_deallocate(void* memory, std::size_t sizeBytes, std::size_t alignmentBytes) override;
    bool do_is_equal(const memory_resource& other) const noexcept override {
        return this == &other;
    }

    AllocatorHooks hooks;
    std::size_t limit;
    std::size_t held = 0;
    std::size_t peak = 0;
    bool refused = false;
};

}  // namespace qmx
