#pragma once

namespace qmx {

// The levels above scalar are those of x86-64: a file of kernels for them has nothing in it elsewhere.
#ifdef __x86_64__
#define QMX_X86
#endif

/// Families of instructions that kernels are written for, each containing the ones before.
enum class CpuLevel {
    /// Any processor.
    scalar,
    /// AVX2, BMI1, BMI2 and popcnt.
    avx2,
    /// AVX-512 F, BW, DQ, VL, CD, VBMI and VBMI2.
    avx512,
};

inline constexpr int kCpuLevels = 3;

#ifdef QMX_X86
// Function attributes: files get no -m flags, because a template that two files share is kept once
// by the linker, perhaps in the form that older processors cannot run.
#define QMX_TARGET_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))
#define QMX_TARGET_AVX512                                                          \
    __attribute__((                                                                \
        target("avx2,bmi,bmi2,popcnt,avx512f,avx512bw,avx512dq,avx512vl,avx512cd," \
               "avx512vbmi,avx512vbmi2")))
#endif

/// Returns: the highest level that this processor runs well. Processors whose pext and pdep are
/// microcode run best at the scalar level.
CpuLevel bestCpuLevel();

/// Returns: the level whose kernels run: the best one, or the one that a guard has set. Kernel
/// tables are fetched by it once for each line, batch or plane.
CpuLevel activeCpuLevel();

/// Returns: "scalar", "avx2", "avx512".
const char* nameOf(CpuLevel level);

/// Sets the level of the whole process while it lives: for tests, fuzz targets and benchmarks.
/// Requires: level <= bestCpuLevel(); no codec is at work when it begins or ends.
class CCpuLevelGuard {
public:
    explicit CCpuLevelGuard(CpuLevel level);
    ~CCpuLevelGuard();
    CCpuLevelGuard(const CCpuLevelGuard&) = delete;
    CCpuLevelGuard& operator=(const CCpuLevelGuard&) = delete;

private:
    CpuLevel before;
};

}  // namespace qmx
