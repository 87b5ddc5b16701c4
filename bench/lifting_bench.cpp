// The 5/3 transform: each kernel, and planes row by row, at every CPU level that this processor has.
// "time/sample" is the time for one sample.

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include "support/RingLines.h"
#include "wavelet/CRowRestorer.h"
#include "wavelet/LiftingKernels.h"

namespace {

using qmx::CpuLevel;

constexpr std::size_t kLineSamples = 3000;

void report(benchmark::State& state, std::size_t samples) {
    state.counters["time/sample"] = benchmark::Counter(
        static_cast<double>(samples),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

template <class T>
struct Lines {
    std::vector<T> samples = std::vector<T>(5 * (kLineSamples + 100));
    T* operator[](std::size_t i) { return samples.data() + i * (kLineSamples + 100); }
};

/// Measures call(kernels, lines), which works on the given number of samples.
template <class T, class Call>
void addKernel(const char* name, CpuLevel level, std::size_t samples, Call call) {
    const std::string fullName =
        std::string(name) + (sizeof(T) == 2 ? "/short/" : "/int/") + qmx::nameOf(level);
    benchmark::RegisterBenchmark(fullName.c_str(), [=](benchmark::State& state) {
        const auto& kernels = qmx::kernelsAt<qmx::LiftingKernels<T>>(level);
        Lines<T> lines;
        for (auto _ : state) {
            call(kernels, lines);
            benchmark::ClobberMemory();
        }
        report(state, samples);
    });
}

template <class T>
void addKernels(CpuLevel level) {
    constexpr std::size_t kCount = kLineSamples;
    addKernel<T>("filterLine", level, kCount,
                 [](const auto& k, auto& lines) { k.filterLine(lines[0], kCount); });
    addKernel<T>("joinLine", level, kCount, [](const auto& k, auto& lines) {
        k.joinLine(lines[0], lines[1], lines[2], kCount);
    });
    addKernel<T>("filterRows", level, 2 * kCount, [](const auto& k, auto& lines) {
        k.filterRows(lines[0], lines[1], lines[2], lines[3], kCount);
    });
    addKernel<T>("unfilterRows", level, 2 * kCount, [](const auto& k, auto& lines) {
        k.unfilterRows(lines[0], lines[1], lines[2], lines[3], kCount);
    });
}

template <class T>
void transformPlane(benchmark::State& state, CpuLevel level, int width, int height) {
    const qmx::CCpuLevelGuard guard(level);
    qmx::CImageData<T> image(width, height, 1);
    std::fill_n(image.row(0, 0), std::ptrdiff_t{image.stride} * height, T{0});
    for (auto _ : state)
        test::sweepForward(
            image, 0, [](int, int, const T* line, std::size_t) { benchmark::DoNotOptimize(line); });
    report(state, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
}

template <class T>
void untransformPlane(benchmark::State& state, CpuLevel level, int width, int height) {
    const qmx::CCpuLevelGuard guard(level);
    for (auto _ : state) {
        qmx::CRowRestorer<T> restorer({width, height, 1}, std::pmr::new_delete_resource());
        for (int r = 0; r < height; ++r)
            restorer.restore(r, [](int, int, T*) { return true; });
    }
    report(state, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
}

template <class T>
void addPlanes(CpuLevel level) {
    constexpr int kSizes[][2] = {{3000, 2000}, {4096, 4096}, {512, 512}, {64, 64}};
    for (const auto& size : kSizes) {
        const std::string place = std::string(sizeof(T) == 2 ? "/short/" : "/int/") +
                                  qmx::nameOf(level) + "/" + std::to_string(size[0]) + "x" +
                                  std::to_string(size[1]);
        benchmark::RegisterBenchmark(("transform" + place).c_str(), transformPlane<T>, level,
                                     size[0], size[1]);
        benchmark::RegisterBenchmark(("untransform" + place).c_str(), untransformPlane<T>, level,
                                     size[0], size[1]);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    for (const CpuLevel level : {CpuLevel::scalar, CpuLevel::avx2, CpuLevel::avx512}) {
        if (level > qmx::bestCpuLevel()) continue;
        addKernels<short>(level);
        addKernels<int>(level);
        addPlanes<short>(level);
        addPlanes<int>(level);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
