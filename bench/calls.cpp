// What a caller waits for: the first call of a codec and those that follow, compression that compares what
// it wrote with the image and one that does not, decompression; whole pictures and small ones from their
// middle; from memory to memory, one thread, through the C interface.
//
// `calls [--cpu-level=LEVEL] [--rounds=N] [--json] [--image=FILE,BYTES/PIXEL,BITS/SAMPLE,WIDTH,HEIGHT ...]`: without
// images it takes those of tesk_bench. Every round makes each kind of call once, so that a slow moment of the
// machine meets all of them, and the fastest round counts. Times are processor times. Page faults are
// those of the last round.

#include <array>
#include <cstdio>
#include <limits>
#include <sys/resource.h>

#include "BenchCodec.h"
#include "BenchJson.h"
#include "BenchPicture.h"
#include "BenchRuns.h"
#include "support/CpuLevelArgument.h"

namespace {

using bench::Bytes;
using bench::Codec;
using bench::Picture;

constexpr int kDefaultRounds = 9;
/// Small calls run again and again for about so long, or the clock would be the larger part.
constexpr double kBatchSeconds = 2e-3;
constexpr std::array<std::array<std::uint32_t, 2>, 3> kSmallSizes{{{300, 200}, {64, 64}, {16, 16}}};

long pageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

struct Cost {
    double seconds = std::numeric_limits<double>::infinity();
    long faults = 0;

    template <class Work>
    void measure(int times, Work work) {
        const long faultsBefore = pageFaults();
        const double took = bench::secondsOf([&] {
            for (int i = 0; i < times; ++i)
                work();
        });
        faults = (pageFaults() - faultsBefore) / times;
        seconds = std::min(seconds, took / times);
    }
};

/// One kind of call: with a codec of its own, and with one that has made such calls before.
struct Call {
    const char* name;
    std::uint32_t flags;
    bool decompresses;
    Codec codec = bench::makeCodec(flags);
    Cost first;
    Cost later;
};

class CCalls {
public:
    explicit CCalls(const Picture& measuredPicture)
        : picture(measuredPicture),
          stream(picture.streamRoomBytes()),
          restored(picture.pixels.size()) {}

    /// Returns: false when the image does not come back.
    bool run(int rounds) {
        const double guess = bench::secondsOf([this] { make(calls[0], calls[0].codec.get()); });
        const int times = 1 + static_cast<int>(kBatchSeconds / guess);
        for (int round = 0; round < rounds; ++round)
            for (Call& call : calls) {
                call.first.measure(times, [&] { make(call, bench::makeCodec(call.flags).get()); });
                make(call, call.codec.get());
                call.later.measure(times, [&] { make(call, call.codec.get()); });
            }
        return restored == picture.pixels;
    }

    void printJson() const {
        std::printf("{");
        bench::printJsonImage(picture.name, picture.image);
        std::printf("\"samples\": %zu, \"streamBytes\": %zu, \"calls\": [", picture.samples(),
                    streamBytes);
        for (const Call& call : calls)
            std::printf(
                "%s{\"name\": \"%s\", \"firstSeconds\": %.9g, \"firstFaults\": %ld, "
                "\"laterSeconds\": %.9g, \"laterFaults\": %ld}",
                &call == calls.data() ? "" : ", ", call.name, call.first.seconds, call.first.faults,
                call.later.seconds, call.later.faults);
        std::printf("]}");
    }

    void print() const {
        std::printf("%s: %u x %u, %u bytes and %u bits per pixel, %.2f bits/sample\n",
                    picture.name.c_str(), picture.image.width, picture.image.height,
                    picture.image.bytes_per_pixel, picture.image.bits_per_pixel,
                    8.0 * static_cast<double>(streamBytes) / samples());
        for (const Call& call : calls)
            print(call);
    }

private:
    double samples() const { return static_cast<double>(picture.samples()); }

    void make(const Call& call, tesk_codec* codec) {
        if (call.decompresses) {
            tesk_decompress(codec, stream.data(), streamBytes, restored.data(), restored.size(), 0,
                            nullptr);
            return;
        }
        tesk_result result = TESK_RESULT_INIT;
        tesk_compress(codec, &picture.image, picture.pixels.data(), 0, 0, stream.data(),
                      stream.size(), &result);
        streamBytes = result.stream_bytes;
    }

    void print(const Call& call) const {
        const double bytes = static_cast<double>(picture.pixels.size());
        std::printf("  %-20s %11.1f %7ld %11.1f %7ld %9.2f %8.1f %7.2f\n", call.name,
                    1e6 * call.first.seconds, call.first.faults, 1e6 * call.later.seconds,
                    call.later.faults, 1e9 * call.later.seconds / samples(),
                    bytes / call.later.seconds / 1e6, call.later.seconds / calls[1].later.seconds);
    }

    const Picture& picture;
    Bytes stream;
    std::size_t streamBytes = 0;
    Bytes restored;
    std::array<Call, 3> calls{Call{"compress", 0, false},
                              Call{"compress, unverified", TESK_UNVERIFIED, false},
                              Call{"decompress", 0, true}};
};

/// Returns: false when the image does not come back.
bool measure(const Picture& picture, int rounds, bool asJson) {
    CCalls calls(picture);
    const bool isRestored = calls.run(rounds);
    if (asJson)
        calls.printJson();
    else
        calls.print();
    if (!isRestored) std::fprintf(stderr, "%s: does not come back\n", picture.name.c_str());
    return isRestored;
}

bool measureSizes(const Picture& picture, int rounds, bool asJson) {
    bool isRestored = measure(picture, rounds, asJson);
    for (const auto& [width, height] : kSmallSizes) {
        if (width > picture.image.width || height > picture.image.height) continue;
        if (asJson) std::printf(",\n");
        isRestored = measure(bench::middleOf(picture, width, height), rounds, asJson) && isRestored;
    }
    return isRestored;
}

/// Returns: false when an image does not come back.
bool measureAll(const std::vector<Picture>& pictures, int rounds) {
    std::printf(
        "CPU level %s, the fastest of %d rounds; \"times\": that of unverified compression\n\n",
        nameOf(qmx::activeCpuLevel()), rounds);
    std::printf("  %-20s %11s %7s %11s %7s %9s %8s %7s\n", "", "first us", "faults", "later us",
                "faults", "ns/sample", "MB/s", "times");
    bool allCameBack = true;
    for (const Picture& picture : pictures)
        allCameBack = measureSizes(picture, rounds, false) && allCameBack;
    return allCameBack;
}

/// The same for tools/bench-figures.
bool measureAllJson(const std::vector<Picture>& pictures, int rounds) {
    std::printf("{\"level\": \"%s\", \"rounds\": %d, \"pictures\": [\n",
                nameOf(qmx::activeCpuLevel()), rounds);
    bool allCameBack = true;
    for (const Picture& picture : pictures) {
        allCameBack = measureSizes(picture, rounds, true) && allCameBack;
        std::printf("%s\n", &picture == &pictures.back() ? "]}" : ",");
    }
    return allCameBack;
}

}  // namespace

int main(int argc, char** argv) {
    const qmx::CCpuLevelGuard guard(test::takeCpuLevel(argc, argv));
    const int rounds = bench::takeRounds(argc, argv, kDefaultRounds);
    const bool asJson = bench::takeFlag(argc, argv, "--json");
    std::vector<Picture> pictures;
    if (!bench::takePictures(argc, argv, pictures)) return 1;
    if (argc > 1) {
        std::fprintf(stderr, "%s: the head of bench/calls.cpp names the arguments\n", argv[1]);
        return 1;
    }
    if (pictures.empty()) pictures = bench::generatedPictures();
    const bool allCameBack =
        asJson ? measureAllJson(pictures, rounds) : measureAll(pictures, rounds);
    return allCameBack ? 0 : 1;
}
