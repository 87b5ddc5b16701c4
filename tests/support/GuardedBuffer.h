#pragma once

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace test {

/// Samples between two pages that may not be touched: at the end of the room in front of the second
/// one, or at its start behind the first one.
template <class T>
class GuardedBuffer {
public:
    enum class Side { atEnd, atStart };

    GuardedBuffer(const std::vector<T>& samples, Side side) : count(samples.size()) {
        const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t sizeBytes = count * sizeof(T);
        const std::size_t roomBytes = (sizeBytes + pageBytes - 1) / pageBytes * pageBytes;
        mappedBytes = roomBytes + 2 * pageBytes;
        mapped = mmap(nullptr, mappedBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) throw std::bad_alloc();
        auto* room = static_cast<unsigned char*>(mapped) + pageBytes;
        if (roomBytes != 0) mprotect(room, roomBytes, PROT_READ | PROT_WRITE);
        first = reinterpret_cast<T*>(side == Side::atEnd ? room + (roomBytes - sizeBytes) : room);
        if (count != 0) std::memcpy(first, samples.data(), sizeBytes);
    }
    ~GuardedBuffer() { munmap(mapped, mappedBytes); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    T* data() const { return first; }
    std::vector<T> samples() const { return std::vector<T>(first, first + count); }

private:
    std::size_t count;
    std::size_t mappedBytes = 0;
    void* mapped = nullptr;
    T* first = nullptr;
};

}  // namespace test
