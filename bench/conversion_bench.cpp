// Raw pixels to and from planes: each kernel, and images row by row, at every CPU level that this
// processor has. "time/sample" is the time for one sample.

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include "image/PixelRows.h"

namespace {

using qmx::CpuLevel;

constexpr std::size_t kPixels = 3000;

void report(benchmark::State& state, std::size_t samples) {
    state.counters["time/sample"] = benchmark::Counter(
        static_cast<double>(samples),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

struct Rows {
    std::vector<unsigned char> samples = std::vector<unsigned char>(3 * kPixels);
    std::vector<short> shorts = std::vector<short>(3 * (kPixels + 40));
    std::vector<int> ints = std::vector<int>(kPixels);
    short* planes[3] = {shorts.data(), shorts.data() + kPixels + 40,
                        shorts.data() + 2 * (kPixels + 40)};
};

/// Measures call(kernels, rows) at every level.
template <class Call>
void addKernel(const char* name, std::size_t samples, Call call) {
    for (const CpuLevel level : {CpuLevel::scalar, CpuLevel::avx2, CpuLevel::avx512}) {
        if (level > qmx::bestCpuLevel()) continue;
        const std::string fullName = std::string(name) + "/" + qmx::nameOf(level);
        benchmark::RegisterBenchmark(fullName.c_str(), [=](benchmark::State& state) {
            const qmx::PixelKernels& kernels = qmx::kernelsAt<qmx::PixelKernels>(level);
            Rows rows;
            for (auto _ : state) {
                call(kernels, rows);
                benchmark::ClobberMemory();
            }
            report(state, samples);
        });
    }
}

void addKernels() {
    constexpr qmx::SampleRange<short> kShorts{-32768, 32767};
    constexpr qmx::SampleRange<int> kInts{0, 65535};
    addKernel("widenBytes", kPixels,
              [](const auto& k, Rows& r) { k.widenBytes(r.planes[0], r.samples.data(), kPixels); });
    addKernel("widenShorts", kPixels, [](const auto& k, Rows& r) {
        k.widenShorts(r.ints.data(), r.samples.data(), kPixels);
    });
    addKernel("separateBytes", 3 * kPixels,
              [](const auto& k, Rows& r) { k.separateBytes(r.planes, r.samples.data(), kPixels); });
    addKernel("separateColours", 3 * kPixels, [](const auto& k, Rows& r) {
        k.separateColours(r.planes, r.samples.data(), kPixels);
    });
    addKernel("narrowToBytes", kPixels, [=](const auto& k, Rows& r) {
        k.narrowToBytes(r.samples.data(), r.planes[0], kPixels, kShorts);
    });
    addKernel("limitShorts", kPixels, [=](const auto& k, Rows& r) {
        k.limitShorts(r.samples.data(), r.planes[0], kPixels, kShorts);
    });
    addKernel("narrowToShorts", kPixels, [=](const auto& k, Rows& r) {
        k.narrowToShorts(r.samples.data(), r.ints.data(), kPixels, kInts);
    });
    addKernel("joinColours", 3 * kPixels, [=](const auto& k, Rows& r) {
        k.joinColours(r.samples.data(), r.planes, kPixels, kShorts);
    });
}

enum class Way { load, store };

/// The rows go through a few that stay in the cache.
template <class T>
void convertImage(benchmark::State& state, CpuLevel level, int bytesPerPixel, Way way) {
    constexpr int kWidth = 3000;
    constexpr int kHeight = 2000;
    constexpr int kSlots = 4;
    const qmx::CCpuLevelGuard guard(level);
    const int planes = bytesPerPixel == 3 ? 3 : 1;
    qmx::CImageData<T> rows(kWidth, kSlots, planes);
    for (int p = 0; p < planes; ++p)
        std::fill_n(rows.row(p, 0), kSlots * rows.stride, T{0});
    const std::size_t rowBytes = std::size_t{kWidth} * static_cast<std::size_t>(bytesPerPixel);
    std::vector<unsigned char> pixels(rowBytes * kHeight);
    const qmx::CSampleLimit<T> limit(0);
    for (auto _ : state) {
        unsigned char* row = pixels.data();
        for (int r = 0; r < kHeight; ++r, row += rowBytes) {
            if (way == Way::load) qmx::loadRow(rows, r % kSlots, bytesPerPixel, row);
            if (way == Way::store) qmx::storeRow(rows, r % kSlots, bytesPerPixel, limit, row);
        }
        benchmark::ClobberMemory();
    }
    report(state, std::size_t{kWidth} * kHeight * static_cast<std::size_t>(planes));
}

template <class T>
void addImage(const char* name, int bytesPerPixel) {
    for (const CpuLevel level : {CpuLevel::scalar, CpuLevel::avx2, CpuLevel::avx512}) {
        if (level > qmx::bestCpuLevel()) continue;
        const std::string place = std::string("/") + name + "/" + qmx::nameOf(level);
        benchmark::RegisterBenchmark(("load" + place).c_str(), convertImage<T>, level,
                                     bytesPerPixel, Way::load);
        benchmark::RegisterBenchmark(("store" + place).c_str(), convertImage<T>, level,
                                     bytesPerPixel, Way::store);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    addKernels();
    addImage<short>("gray8", 1);
    addImage<short>("rgb8", 3);
    addImage<short>("gray11", 2);
    addImage<int>("gray16", 2);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
