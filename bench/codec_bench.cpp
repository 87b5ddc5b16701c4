// Compression and decompression from memory to memory, one thread, through the C interface.
//
// Without arguments of its own it works on generated images of 3000 x 2000 pixels, one of each sample
// type. `--image=FILE,BYTES/PIXEL,BITS/PIXEL,WIDTH,HEIGHT`, any number of times, adds raw files. All
// other arguments are those of Google Benchmark.

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <tesk/tesk.h>
#include <vector>

#include "SampleScene.h"

namespace {

using Bytes = std::vector<unsigned char>;

struct Picture {
    std::string name;
    tesk_image image;
    Bytes pixels;

    std::size_t samples() const {
        const std::size_t perPixel = image.bytes_per_pixel == 3 ? 3 : 1;
        return std::size_t{image.width} * image.height * perPixel;
    }
};

struct CodecDestroyer {
    void operator()(tesk_codec* codec) const { tesk_destroy(codec); }
};
using Codec = std::unique_ptr<tesk_codec, CodecDestroyer>;

/// The comparison at the end of a compression would add the time of a decompression.
Codec makeCodec() {
    tesk_options options = TESK_OPTIONS_INIT;
    options.flags = TESK_UNVERIFIED;
    tesk_codec* codec = nullptr;
    tesk_create(&options, &codec);
    return Codec(codec);
}

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
    const Codec codec = makeCodec();
    Bytes stream(3 * picture.pixels.size() + 65536);
    tesk_result result = TESK_RESULT_INIT;
    std::size_t streamBytes = 0;
    for (auto _ : state)
        streamBytes = compressInto(state, codec.get(), picture, stream, result);
    report(state, picture, streamBytes, result);
}

void decompressPicture(benchmark::State& state, const Picture& picture) {
    const Codec codec = makeCodec();
    Bytes stream(3 * picture.pixels.size() + 65536);
    tesk_result result = TESK_RESULT_INIT;
    stream.resize(compressInto(state, codec.get(), picture, stream, result));
    Bytes restored(picture.pixels.size());
    for (auto _ : state)
        tesk_decompress(codec.get(), stream.data(), stream.size(), restored.data(), restored.size(),
                        0, &result);
    if (restored != picture.pixels) state.SkipWithError("the image does not come back");
    report(state, picture, stream.size(), result);
}

Picture generated(const std::string& name, const sample::Layout& layout) {
    Picture picture{name, TESK_IMAGE_INIT, sample::makeImage(layout)};
    picture.image.width = static_cast<std::uint32_t>(layout.width);
    picture.image.height = static_cast<std::uint32_t>(layout.height);
    picture.image.bytes_per_pixel = static_cast<std::uint32_t>(layout.bytesPerPixel);
    picture.image.bits_per_pixel = static_cast<std::uint32_t>(layout.bitsPerPixel);
    return picture;
}

/// Reads what an --image argument names. Returns: false, after a line on standard error, when it
/// cannot.
bool readPicture(const char* argument, Picture& picture) {
    char name[4096];
    tesk_image& image = picture.image;
    image = TESK_IMAGE_INIT;
    if (std::sscanf(argument, "%4095[^,],%u,%u,%u,%u", name, &image.bytes_per_pixel,
                    &image.bits_per_pixel, &image.width, &image.height) != 5) {
        std::fprintf(stderr, "--image=%s: not FILE,BYTES/PIXEL,BITS/PIXEL,WIDTH,HEIGHT\n",
                     argument);
        return false;
    }
    picture.name = name;
    picture.pixels.resize(std::size_t{image.width} * image.height * image.bytes_per_pixel);
    std::ifstream file(name, std::ios::binary);
    file.read(reinterpret_cast<char*>(picture.pixels.data()),
              static_cast<std::streamsize>(picture.pixels.size()));
    if (!file.good()) std::fprintf(stderr, "%s: too short or not there\n", name);
    return file.good();
}

/// Takes the --image arguments out of argv. Returns: false when one of them is of no use.
bool takePictures(int& argc, char** argv, std::vector<Picture>& pictures) {
    constexpr char kOption[] = "--image=";
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], kOption, sizeof kOption - 1) != 0) {
            argv[kept++] = argv[i];
            continue;
        }
        pictures.emplace_back();
        if (!readPicture(argv[i] + sizeof kOption - 1, pictures.back())) return false;
    }
    argc = kept;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<Picture> pictures;
    if (!takePictures(argc, argv, pictures)) return 1;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    pictures.push_back(generated("gray8", {3000, 2000, 1, 8}));
    pictures.push_back(generated("rgb8", {3000, 2000, 3, 8}));
    pictures.push_back(generated("gray12", {3000, 2000, 2, 12}));
    pictures.push_back(generated("gray16", {3000, 2000, 2, 16}));
    for (const Picture& picture : pictures) {
        benchmark::RegisterBenchmark(("compress/" + picture.name).c_str(), compressPicture, picture)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("decompress/" + picture.name).c_str(), decompressPicture,
                                     picture)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
