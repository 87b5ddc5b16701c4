// The coefficient encoder and its kernels, at each CPU level: time for each sample of generated photographs.

#include <benchmark/benchmark.h>
#include <memory>
#include <string>

#include "SampleScene.h"
#include "bitstream/CBitWriter.h"
#include "coding/encode/CRowLines.h"
#include "support/RingLines.h"

namespace {

using namespace qmx;

constexpr int kWidth = 2048;
constexpr int kHeight = 1024;
constexpr std::size_t kSamples = std::size_t{kWidth} * kHeight;
/// Samples of a line that stays in the first cache.
constexpr std::size_t kLineSamples = 512;

void report(benchmark::State& state, std::size_t samples) {
    state.counters["s/sample"] = benchmark::Counter(
        static_cast<double>(samples),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// A transformed photograph whose samples were shifted right, so that less remains to be coded.
template <class T>
std::vector<T> coefficientsOf(int bits, int shift) {
    const auto bytes = sample::makeImage({kWidth, kHeight, 2, bits});
    CImageData<T> image(kWidth, kHeight, 1);
    for (std::size_t i = 0; i < kSamples; ++i)
        image.plane[0][i] = static_cast<T>((bytes[2 * i] | bytes[2 * i + 1] << 8) >> shift);
    return test::coefficientsOf(image, 0);
}

/// Gives the lines of a sweep what is transformed already.
template <class T>
void passThrough(CRowLines<T>& lines, int level, int r) {
    if (r % 2 != 0 || level + 1 == lines.count()) return lines.done(level, r);
    lines.passOn(level, r);
    passThrough(lines, level + 1, r / 2);
}

template <class T>
void encodeInto(CCodedSections<T>& sections, const std::vector<T>& coefficients) {
    CPlaneEncoder<T> encoder(sections, 0, 0);
    CImageData<T> rows(kWidth, CRowLines<T>::kRows, 1);
    CRowLines<T> lines(sections.shape(), sections.levels(), rows, 0, encoder, sections.memory());
    for (int r = 0; r < kHeight; ++r) {
        std::copy_n(coefficients.begin() + std::ptrdiff_t{r} * kWidth, kWidth, lines.line(0, r));
        passThrough(lines, 0, r);
    }
    encoder.finish();
    sections.close(encoder.getFound());
}

template <class T>
void encodeCoefficients(benchmark::State& state, CpuLevel level,
                        const std::vector<T>& coefficients) {
    const CCpuLevelGuard guard(level);
    std::vector<unsigned char> out(8 * kSamples);
    std::uint64_t bits = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto sections = std::make_unique<CCodedSections<T>>(ImageShape{kWidth, kHeight, 1},
                                                            std::pmr::new_delete_resource());
        CBitWriter writer(out.data(), out.size());
        state.ResumeTiming();
        encodeInto(*sections, coefficients);
        sections->writeStream(writer);
        state.PauseTiming();
        bits = writer.getTotal();
        sections.reset();
        state.ResumeTiming();
    }
    report(state, kSamples);
    state.counters["bits/sample"] = static_cast<double>(bits) / static_cast<double>(kSamples);
}

template <class T>
void foldLine(benchmark::State& state, CpuLevel level, const std::vector<T>& coefficients) {
    const FoldKernels<T>& kernels = kernelsAt<FoldKernels<T>>(level);
    std::vector<T> folded(kLineSamples);
    FoldedUnion<T> all;
    for (auto _ : state) {
        kernels.fold(coefficients.data(), kLineSamples, folded.data(), all);
        benchmark::ClobberMemory();
    }
    report(state, kLineSamples);
}

template <class T>
void splitLine(benchmark::State& state, CpuLevel level, const std::vector<T>& coefficients) {
    const FoldKernels<T>& kernels = kernelsAt<FoldKernels<T>>(level);
    std::vector<T> even(kLineSamples / 2);
    std::vector<T> odd(kLineSamples / 2);
    for (auto _ : state) {
        kernels.split(coefficients.data(), kLineSamples / 2, even.data(), odd.data());
        benchmark::ClobberMemory();
    }
    report(state, kLineSamples);
}

template <class T>
void encodeOrder(COrderEncoder<T>& encoder, const std::vector<T>& folded) {
    constexpr std::size_t kRoom = COrderEncoder<T>::kRoom;
    static_assert(kSamples % kRoom == 0);
    for (auto next = folded.begin(); next != folded.end(); next += kRoom) {
        std::copy_n(next, kRoom, encoder.room());
        encoder.encodeRoom(kRoom);
    }
    encoder.finish();
}

/// encode and finish of the kernels: all coefficients as if they were of one order.
template <class T>
void encodeGroups(benchmark::State& state, CpuLevel level, const std::vector<T>& coefficients) {
    const CCpuLevelGuard guard(level);
    std::vector<T> folded(kSamples);
    FoldedUnion<T> all;
    kernelsAt<FoldKernels<T>>(level).fold(coefficients.data(), kSamples, folded.data(), all);
    for (auto _ : state) {
        state.PauseTiming();
        auto streams =
            std::make_unique<EncoderStreams<T>>(1, 0, kSamples, std::pmr::new_delete_resource());
        auto encoder = std::make_unique<COrderEncoder<T>>(*streams, 0, 0);
        state.ResumeTiming();
        encodeOrder(*encoder, folded);
        state.PauseTiming();
        encoder.reset();
        streams.reset();
        state.ResumeTiming();
    }
    report(state, kSamples);
}

template <class T>
using Coefficients = std::shared_ptr<const std::vector<T>>;

template <class T>
using Measure = void (*)(benchmark::State&, CpuLevel, const std::vector<T>&);

template <class T>
void addAtAllLevels(const std::string& name, Measure<T> measure,
                    const Coefficients<T>& coefficients, benchmark::TimeUnit unit) {
    for (int level = 0; level <= static_cast<int>(bestCpuLevel()); ++level) {
        const auto cpuLevel = static_cast<CpuLevel>(level);
        const std::string fullName = name + "/" + nameOf(cpuLevel);
        benchmark::RegisterBenchmark(fullName.c_str(), [=](benchmark::State& state) {
            measure(state, cpuLevel, *coefficients);
        })->Unit(unit);
    }
}

template <class T>
void addPlanes(const std::string& type, int bits, int shift) {
    const auto coefficients = std::make_shared<std::vector<T>>(coefficientsOf<T>(bits, shift));
    const std::string place = "/" + type + "/" + std::to_string(bits - shift) + "bits";
    addAtAllLevels<T>("encode" + place, encodeCoefficients, coefficients, benchmark::kMillisecond);
    addAtAllLevels<T>("encodeGroups" + place, encodeGroups, coefficients, benchmark::kMillisecond);
}

/// How long these take does not depend on the coefficients.
template <class T>
void addLines(const std::string& type) {
    const auto coefficients = std::make_shared<std::vector<T>>(coefficientsOf<T>(8, 0));
    addAtAllLevels<T>("foldLine/" + type, foldLine, coefficients, benchmark::kNanosecond);
    addAtAllLevels<T>("splitLine/" + type, splitLine, coefficients, benchmark::kNanosecond);
}

}  // namespace

int main(int count, char** arguments) {
    addPlanes<short>("short", 8, 0);
    addPlanes<short>("short", 8, 3);
    addPlanes<short>("short", 12, 0);
    addPlanes<int>("int", 8, 0);
    addPlanes<int>("int", 16, 0);
    addLines<short>("short");
    addLines<int>("int");
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
