// The coefficient encoder alone, at each CPU level: time for each sample of generated photographs.

#include <benchmark/benchmark.h>
#include <memory>
#include <string>

#include "SampleScene.h"
#include "bitstream/CBitWriter.h"
#include "image/CpuLevel.h"
#include "wavelet/CFilter5_3.h"
#include "wavelet/CWaveletEncoder.h"

namespace {

using namespace qmx;

constexpr int kWidth = 2048;
constexpr int kHeight = 1024;
constexpr std::size_t kSamples = std::size_t{kWidth} * kHeight;

/// A transformed photograph whose samples were shifted right, so that less remains to be coded.
template <class T>
std::vector<T> coefficientsOf(int bits, int shift) {
    const auto bytes = sample::makeImage({kWidth, kHeight, 2, bits});
    CImageData<T> image(kWidth, kHeight, 1);
    for (std::size_t i = 0; i < kSamples; ++i)
        image.plane[0][i] = static_cast<T>((bytes[2 * i] | bytes[2 * i + 1] << 8) >> shift);
    CFilter5_3<T> filter;
    CWaveletEncoder<T> encoder(&image, &filter, false);
    encoder.transform();
    return {image.plane[0], image.plane[0] + kSamples};
}

template <class T>
void encodeCoefficients(benchmark::State& state, CpuLevel level,
                        const std::vector<T>& coefficients) {
    const CCpuLevelGuard guard(level);
    CImageData<T> image(kWidth, kHeight, 1);
    CFilter5_3<T> filter;
    std::vector<unsigned char> out(8 * kSamples);
    std::uint64_t bits = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(coefficients.begin(), coefficients.end(), image.plane[0]);
        auto encoder = std::make_unique<CWaveletEncoder<T>>(&image, &filter, false);
        CBitWriter writer(out.data(), out.size());
        state.ResumeTiming();
        encoder->writeWavelet(writer, 0);
        state.PauseTiming();
        bits = writer.getTotal();
        encoder.reset();
        state.ResumeTiming();
    }
    const auto inverted =
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert;
    state.counters["s/sample"] = benchmark::Counter(static_cast<double>(kSamples), inverted);
    state.counters["bits/sample"] = static_cast<double>(bits) / static_cast<double>(kSamples);
}

template <class T>
void registerAll(const char* type, int bits, int shift) {
    const auto coefficients =
        std::make_shared<const std::vector<T>>(coefficientsOf<T>(bits, shift));
    for (int level = 0; level <= static_cast<int>(bestCpuLevel()); ++level) {
        const auto cpuLevel = static_cast<CpuLevel>(level);
        const std::string name = std::string("encode/") + type + "/" +
                                 std::to_string(bits - shift) + "bits/" + nameOf(cpuLevel);
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
            encodeCoefficients<T>(state, cpuLevel, *coefficients);
        })->Unit(benchmark::kMillisecond);
    }
}

}  // namespace

int main(int count, char** arguments) {
    registerAll<short>("short", 8, 0);
    registerAll<short>("short", 8, 3);
    registerAll<short>("short", 12, 0);
    registerAll<int>("int", 8, 0);
    registerAll<int>("int", 16, 0);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
