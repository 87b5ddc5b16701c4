#include "image/CpuLevel.h"

#include <atomic>
#include <cassert>

namespace qmx {
namespace {

#ifdef QMX_X86

/// pext and pdep take tens of cycles there.
bool hasSlowBitDeposit() {
    return __builtin_cpu_is("bdver4") != 0 || __builtin_cpu_is("znver1") != 0 ||
           __builtin_cpu_is("znver2") != 0;
}

bool supportsAvx2() {
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0 &&
           __builtin_cpu_supports("bmi2") != 0 && __builtin_cpu_supports("popcnt") != 0;
}

bool supportsAvx512() {
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("avx512cd") != 0 && __builtin_cpu_supports("avx512vbmi") != 0 &&
           __builtin_cpu_supports("avx512vbmi2") != 0;
}

CpuLevel detect() {
    __builtin_cpu_init();
    if (!supportsAvx2() || hasSlowBitDeposit()) return CpuLevel::scalar;
    return supportsAvx512() ? CpuLevel::avx512 : CpuLevel::avx2;
}

#else

CpuLevel detect() {
    return CpuLevel::scalar;
}

#endif

std::atomic<CpuLevel>& active() {
    static std::atomic<CpuLevel> level{bestCpuLevel()};
    return level;
}

}  // namespace

CpuLevel bestCpuLevel() {
    static const CpuLevel best = detect();
    return best;
}

CpuLevel activeCpuLevel() {
    return active().load(std::memory_order_relaxed);
}

const char* nameOf(CpuLevel level) {
    constexpr const char* kNames[kCpuLevels] = {"scalar", "avx2", "avx512"};
    return kNames[static_cast<int>(level)];
}

CCpuLevelGuard::CCpuLevelGuard(CpuLevel level) : before(activeCpuLevel()) {
    assert(level <= bestCpuLevel());
    active().store(level, std::memory_order_relaxed);
}

CCpuLevelGuard::~CCpuLevelGuard() {
    active().store(before, std::memory_order_relaxed);
}

}  // namespace qmx
