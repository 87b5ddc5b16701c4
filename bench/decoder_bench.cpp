// The coefficient decoder alone, at every CPU level, on the streams of generated images, from memory:
// section headers and rows of coefficients, without the inverse transform. Times are for each sample.

#include <benchmark/benchmark.h>
#include <cstring>
#include <memory>
#include <string>
#include <tesk/tesk.h>
#include <vector>

#include "SampleScene.h"
#include "bitstream/CBitReader.h"
#include "coding/decode/CPlaneDecoder.h"
#include "coding/decode/CReceivedSections.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kWidth = 2000;
constexpr int kHeight = 1500;

struct Stream {
    const char* name;
    sample::Layout layout;
    /// Highest amplitude of noise that is added to the samples: more bits for each of them.
    int noise;
    Bytes bytes;
};

/// Adds reproducible noise to 8-bit samples.
void addNoise(Bytes& pixels, int amplitude) {
    std::uint32_t state = 1;
    for (auto& pixel : pixels) {
        state = state * 1664525U + 1013904223U;
        const int noise =
            static_cast<int>((state >> 16) % static_cast<unsigned>(2 * amplitude + 1));
        pixel = static_cast<unsigned char>(std::clamp(pixel + noise - amplitude, 0, 255));
    }
}

Bytes streamOf(const sample::Layout& layout, int noise) {
    tesk_image image = TESK_IMAGE_INIT;
    image.width = static_cast<std::uint32_t>(layout.width);
    image.height = static_cast<std::uint32_t>(layout.height);
    image.bytes_per_pixel = static_cast<std::uint32_t>(layout.bytesPerPixel);
    image.bits_per_pixel = static_cast<std::uint32_t>(layout.bitsPerPixel);
    Bytes pixels = sample::makeImage(layout);
    if (noise > 0) addNoise(pixels, noise);
    Bytes stream(3 * pixels.size() + 65536);
    tesk_codec* codec = nullptr;
    tesk_create(nullptr, &codec);
    tesk_result result = TESK_RESULT_INIT;
    tesk_compress(codec, &image, pixels.data(), 0, 0, stream.data(), stream.size(), &result);
    tesk_destroy(codec);
    stream.resize(result.stream_bytes);
    return stream;
}

template <class T>
void decodePlane(qmx::CReceivedSections<T>& sections, T* row) {
    qmx::CPlaneDecoder<T> decoder(sections, 0);
    for (int r = 0; r < kHeight; ++r) {
        std::fill_n(row, kWidth, T{0});
        decoder.decodeRow(r, row);
    }
}

template <class T>
void decode(benchmark::State& state, const Stream& stream, qmx::CpuLevel level) {
    const qmx::CCpuLevelGuard guard(level);
    std::vector<T> row(kWidth);
    for (auto _ : state) {
        qmx::CBitReader reader(stream.bytes.data() + 16, stream.bytes.size() - 16);
        qmx::CReceivedSections<T> sections({kWidth, kHeight, 1}, std::pmr::new_delete_resource());
        if (sections.read(reader) != 0) state.SkipWithError("the stream is not complete");
        decodePlane(sections, row.data());
    }
    const double samples = double{kWidth} * kHeight;
    state.counters["bits/sample"] = 8.0 * static_cast<double>(stream.bytes.size()) / samples;
    state.counters["time/sample"] = benchmark::Counter(
        samples, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void registerAt(const Stream& stream, qmx::CpuLevel level) {
    const std::string name = std::string("decode/") + stream.name + "/" + nameOf(level);
    const auto run = stream.layout.bitsPerPixel > 11 ? decode<int> : decode<short>;
    benchmark::RegisterBenchmark(name.c_str(), run, stream, level)->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Stream streams[] = {{"gray8", {kWidth, kHeight, 1, 8}, 0, {}},
                        {"gray8noisy", {kWidth, kHeight, 1, 8}, 8, {}},
                        {"gray12int", {kWidth, kHeight, 2, 12}, 0, {}},
                        {"gray16int", {kWidth, kHeight, 2, 16}, 0, {}}};
    for (Stream& stream : streams) {
        stream.bytes = streamOf(stream.layout, stream.noise);
        for (int level = 0; level <= static_cast<int>(qmx::bestCpuLevel()); ++level)
            registerAt(stream, static_cast<qmx::CpuLevel>(level));
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
