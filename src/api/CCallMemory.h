#pragma once

#include <cstddef>
#include <memory_resource>

#include "api/CKeptMemory.h"

namespace qmx {

/// The memory of one call: comes from what the codec keeps, is counted, and ends at a limit.
class CCallMemory final : public std::pmr::memory_resource {
public:
    /// limitBytes: most bytes held at one time, with those that are kept; 0 for no limit. Requires: keptMemory
    /// works until all that was allocated has been released.
    CCallMemory(CKeptMemory& keptMemory, std::size_t limitBytes);
    CCallMemory(const CCallMemory&) = delete;
    CCallMemory& operator=(const CCallMemory&) = delete;
    ~CCallMemory() override { kept.endCall(); }

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

    CKeptMemory& kept;
    std::size_t limit;
    std::size_t held = 0;
    std::size_t peak = 0;
    bool refused = false;
};

}  // namespace qmx
