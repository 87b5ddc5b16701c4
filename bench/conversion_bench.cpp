// Raw pixels to and from planes: each kernel, and whole images, at every CPU level that this
// processor has. "time/sample" is the time for one sample.

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include "container/RawPixels.h"
#include "image/PixelKernels.h"
#include "wavelet/OutputConversion.h"

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
            const qmx::PixelKernels& kernels = qmx::pixelKernels(level);
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
    addKernel("forwardColours", 3 * kPixels,
              [](const auto& k, Rows& r) { k.forwardColours(r.planes, kPixels); });
    addKernel("inverseColours", 3 * kPixels,
              [](const auto& k, Rows& r) { k.inverseColours(r.planes, kPixels); });
    addKernel("narrowToBytes", kPixels, [=](const auto& k, Rows& r) {
        k.narrowToBytes(r.samples.data(), r.planes[0], kPixels, kShorts);
    });
    addKernel("limitShorts", kPixels, [=](const auto& k, Rows& r) {
        k.limitShorts(r.samples.data(), r.planes[0], kPixels, kShorts);
    });
    addKernel("narrowToShorts", kPixels, [=](const auto& k, Rows& r) {
        k.narrowToShorts(r.samples.data(), r.ints.data(), kPixels, kInts);
    });
    addKernel("joinBytes", 3 * kPixels, [=](const auto& k, Rows& r) {
        k.joinBytes(r.samples.data(), r.planes, kPixels, kShorts);
    });
    addKernel("joinColours", 3 * kPixels, [=](const auto& k, Rows& r) {
        k.joinColours(r.samples.data(), r.planes, kPixels, kShorts);
    });
}

enum class Way { load, store };

template <class T, class P>
void convertImage(benchmark::State& state, CpuLevel level, int planes, Way way) {
    constexpr int kWidth = 3000;
    constexpr int kHeight = 2000;
    const qmx::CCpuLevelGuard guard(level);
    qmx::CImageData<T> image(kWidth, kHeight, planes);
    image.clear();
    const std::size_t rowBytes = sizeof(P) * kWidth * static_cast<std::size_t>(planes);
    std::vector<unsigned char> pixels(rowBytes * kHeight);
    const int bytesPerPixel = planes == 3 ? 3 : static_cast<int>(sizeof(P));
    const qmx::SampleLimit<T> limit(0);
    for (auto _ : state) {
        if (way == Way::load) qmx::loadPixels<P>(image, pixels.data(), rowBytes);
        for (int r = 0; r < kHeight && way == Way::store; ++r)
            qmx::convertRow(image, r, bytesPerPixel, limit,
                            pixels.data() + rowBytes * static_cast<std::size_t>(r));
        benchmark::ClobberMemory();
    }
    report(state, rowBytes * kHeight / sizeof(P));
}

template <class T, class P>
void addImage(const char* name, int planes) {
    for (const CpuLevel level : {CpuLevel::scalar, CpuLevel::avx2, CpuLevel::avx512}) {
        if (level > qmx::bestCpuLevel()) continue;
        const std::string place = std::string("/") + name + "/" + qmx::nameOf(level);
        benchmark::RegisterBenchmark(("load" + place).c_str(), convertImage<T, P>, level, planes,
                                     Way::load);
        benchmark::RegisterBenchmark(("store" + place).c_str(), convertImage<T, P>, level, planes,
                                     Way::store);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    addKernels();
    addImage<short, unsigned char>("gray8", 1);
    addImage<short, unsigned char>("rgb8", 3);
    addImage<short, unsigned short>("gray11", 1);
    addImage<int, unsigned short>("gray16", 1);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
