#include "image/HugePages.h"

#include <cerrno>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace qmx {
namespace {

// Touching 12 MB for the first time takes 4.3 ms, and 1.1 ms with the hint; 4 MB take the same with
// and without it (2026-11-21, least of 20).
constexpr std::size_t kLeastBytes = std::size_t{4} << 20;

}  // namespace

void adviseHugePages(void* block, std::size_t sizeBytes) {
    if (sizeBytes < kLeastBytes) return;
    const auto pageBytes = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::size_t skippedBytes = (pageBytes - address % pageBytes) % pageBytes;
    const int errorBefore = errno;
    // A kernel without large pages refuses, which does not matter.
    static_cast<void>(
        madvise(static_cast<char*>(block) + skippedBytes, sizeBytes - skippedBytes, MADV_HUGEPAGE));
    errno = errorBefore;
}

}  // namespace qmx
