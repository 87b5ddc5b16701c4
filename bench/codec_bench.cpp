// Compression, decompression and reduced pictures, 1 : 2 to 1 : 32, from memory to memory, one thread,
// through the C interface.
//
// `--cpu-level=scalar|avx2|avx512`, as the first argument, holds the kernels at a level. Without
// `--image=FILE,BYTES/PIXEL,BITS/SAMPLE,WIDTH,HEIGHT`, given any number of times, it works on generated
// images of 3000 x 2000 pixels, one of each sample type. All other arguments are those of Google
// Benchmark.

#include <benchmark/benchmark.h>

#include "BenchCodec.h"
#include "BenchPicture.h"
#include "support/CpuLevelArgument.h"

namespace {

using bench::Bytes;
using bench::Codec;
using bench::Picture;

/// Returns: the stream's size, after telling state about a failure.
std::size_t compressInto(benchmark::State& state, tesk_codec* codec, const Picture& picture,
                         Bytes& stream, tesk_result& result) {
    const tesk_status status = tesk_compress(codec, &picture.image, picture.pixels.data(), 0, 0,
                                             stream.data(), stream.size(), &result);
    if (status != TESK_OK) state.SkipWithError(tesk_status_message(status));
    return result.stream_bytes;
}

void report(benchmark::State& state, const Picture& picture, std::size_t streamBytes,
            const tesk_result& result) {
    const auto runs = state.iterations();
    const auto samples = static_cast<std::int64_t>(picture.samples());
    state.SetBytesProcessed(runs * static_cast<std::int64_t>(picture.pixels.size()));
    state.SetItemsProcessed(runs * samples);
    const auto perSample = static_cast<double>(samples);
    state.counters["bits/sample"] = 8.0 * static_cast<double>(streamBytes) / perSample;
    state.counters["time/sample"] = benchmark::Counter(
        perSample, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["memory/sample"] = static_cast<double>(result.peak_memory_bytes) / perSample;
}

void compressPicture(benchmark::State& state, const Picture& picture) {
    const Codec codec = bench::makeCodec();
    Bytes stream(picture.streamRoomBytes());
    tesk_result result = TESK_RESULT_INIT;
    std::size_t streamBytes = 0;
    for (auto _ : state)
        streamBytes = compressInto(state, codec.get(), picture, stream, result);
    report(state, picture, streamBytes, result);
}

void decompressPicture(benchmark::State& state, const Picture& picture) {
    const Codec codec = bench::makeCodec();
    Bytes stream(picture.streamRoomBytes());
    tesk_result result = TESK_RESULT_INIT;
    stream.resize(compressInto(state, codec.get(), picture, stream, result));
    Bytes restored(picture.pixels.size());
    for (auto _ : state)
        tesk_decompress(codec.get(), stream.data(), stream.size(), restored.data(), restored.size(),
                        0, &result);
    if (restored != picture.pixels) state.SkipWithError("the image does not come back");
    report(state, picture, stream.size(), result);
}

/// Row by row, each in a call of its own; without the comparison as well.
void compressRows(benchmark::State& state, const Picture& picture) {
    const Codec codec = bench::makeCodec();
    const std::size_t rowBytes = picture.pixels.size() / picture.image.height;
    tesk_result result = TESK_RESULT_INIT;
    for (auto _ : state) {
        void* block = nullptr;
        tesk_compress_begin(codec.get(), &picture.image, 0);
        for (std::size_t r = 0; r < picture.image.height; ++r)
            tesk_compress_rows(codec.get(), picture.pixels.data() + r * rowBytes, 0, 1);
        if (tesk_compress_end(codec.get(), &block, &result) != TESK_OK)
            state.SkipWithError("not compressed");
        tesk_release_block(codec.get(), block);
    }
    report(state, picture, result.stream_bytes, result);
}

void decompressRows(benchmark::State& state, const Picture& picture) {
    const Codec codec = bench::makeCodec();
    const std::size_t rowBytes = picture.pixels.size() / picture.image.height;
    Bytes stream(picture.streamRoomBytes());
    tesk_result result = TESK_RESULT_INIT;
    stream.resize(compressInto(state, codec.get(), picture, stream, result));
    Bytes restored(picture.pixels.size());
    for (auto _ : state) {
        tesk_decompress_begin(codec.get(), stream.data(), stream.size(), nullptr);
        for (std::size_t r = 0; r < picture.image.height; ++r)
            tesk_decompress_rows(codec.get(), restored.data() + r * rowBytes, 0, 1);
        tesk_decompress_end(codec.get(), &result);
    }
    if (restored != picture.pixels) state.SkipWithError("the image does not come back");
    report(state, picture, stream.size(), result);
}

/// Per sample of the picture that the stream holds, so that the times can be compared with the whole one.
void reducePicture(benchmark::State& state, const Picture& picture) {
    const Codec codec = bench::makeCodec();
    Bytes stream(picture.streamRoomBytes());
    tesk_result result = TESK_RESULT_INIT;
    stream.resize(compressInto(state, codec.get(), picture, stream, result));
    const auto levels = static_cast<std::uint32_t>(state.range(0));
    Bytes reduced(picture.pixels.size());
    for (auto _ : state) {
        const tesk_status status =
            tesk_decompress_reduced(codec.get(), stream.data(), stream.size(), levels,
                                    reduced.data(), reduced.size(), 0, &result);
        if (status != TESK_OK) state.SkipWithError(tesk_status_message(status));
    }
    report(state, picture, stream.size(), result);
}

void registerAll(const Picture& picture) {
    const auto add = [&](const std::string& name, auto* work) {
        return benchmark::RegisterBenchmark((name + picture.name).c_str(), work, picture)
            ->Unit(benchmark::kMillisecond);
    };
    add("compress/", compressPicture);
    add("decompress/", decompressPicture);
    add("compressRows/", compressRows);
    add("decompressRows/", decompressRows);
    add("reduce/", reducePicture)->DenseRange(1, 5);
}

}  // namespace

int main(int argc, char** argv) {
    const qmx::CCpuLevelGuard guard(test::takeCpuLevel(argc, argv));
    std::vector<Picture> pictures;
    if (!bench::takePictures(argc, argv, pictures)) return 1;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::AddCustomContext("CPU level", nameOf(qmx::activeCpuLevel()));
    if (pictures.empty()) pictures = bench::generatedPictures();
    for (const Picture& picture : pictures)
        registerAll(picture);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
