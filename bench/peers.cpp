// tesk beside general lossless codecs and memcpy: memory to memory, one thread, the same images, in
// the same run.
//
// `peers [--cpu-level=LEVEL] [--rounds=N] [--image=FILE,BYTES/PIXEL,BITS/PIXEL,WIDTH,HEIGHT ...]`. The
// level is that of tesk; without images it takes those of tesk_bench. Every round runs every codec
// once, so that a slow moment of the machine meets all of them, and the fastest round counts. Times
// are processor times of the process, helper threads of a library included: on an idle machine those
// of a clock, on a busy one still of use. The exit status is 1 when a codec does not give an image
// back.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <limits>

#include "BenchRuns.h"
#include "IPeer.h"
#include "support/CpuLevelArgument.h"

namespace {

using bench::Bytes;
using bench::IPeer;
using bench::Peer;
using bench::Picture;

constexpr int kDefaultRounds = 7;

struct Entry {
    Peer peer;
    std::size_t streamBytes = 0;
    double compressSeconds = std::numeric_limits<double>::infinity();
    double decompressSeconds = std::numeric_limits<double>::infinity();
    /// Empty, or why there are no figures.
    std::string failure;
};

/// Its first entry is tesk.
std::vector<Entry> makeEntries() {
    std::vector<Entry> entries;
    const auto add = [&](Peer peer) {
        entries.emplace_back();
        entries.back().peer = std::move(peer);
    };
    add(bench::makeTesk());
#ifdef TESK_PEER_OPENJPH
    add(bench::makeOpenjph());
#endif
#ifdef TESK_PEER_OPENJPEG
    add(bench::makeOpenjpeg());
#endif
#ifdef TESK_PEER_CHARLS
    add(bench::makeCharls());
#endif
#ifdef TESK_PEER_LIBJXL
    add(bench::makeLibjxl());
#endif
    add(bench::makeMemcpy());
    return entries;
}

/// Compresses and decompresses once.
void runOnce(Entry& entry, const Picture& picture, Bytes& room, Bytes& pixels) {
    IPeer& peer = *entry.peer;
    const double compressing =
        bench::secondsOf([&] { entry.streamBytes = peer.compress(picture, room); });
    std::fill(pixels.begin(), pixels.end(), static_cast<unsigned char>(0));
    const std::span<const unsigned char> stream(room.data(), entry.streamBytes);
    const double decompressing =
        bench::secondsOf([&] { peer.decompress(stream, picture, pixels); });
    entry.compressSeconds = std::min(entry.compressSeconds, compressing);
    entry.decompressSeconds = std::min(entry.decompressSeconds, decompressing);
    if (pixels != picture.pixels) entry.failure = "the image does not come back";
}

void tryOnce(Entry& entry, const Picture& picture, Bytes& room, Bytes& pixels) {
    try {
        runOnce(entry, picture, room, pixels);
    } catch (const std::exception& error) {
        entry.failure = error.what();
    }
}

/// Prints one direction of an entry, and how many times as fast tesk is.
void printDirection(const Picture& picture, double seconds, double teskSeconds) {
    std::printf("  %8.1f %9.3f %8.3f", static_cast<double>(picture.pixels.size()) / seconds / 1e6,
                seconds * 1e9 / static_cast<double>(picture.samples()), seconds / teskSeconds);
}

void printEntries(const Picture& picture, const std::vector<Entry>& entries) {
    std::printf("%s: %u x %u, %u bytes and %u bits per pixel\n", picture.name.c_str(),
                picture.image.width, picture.image.height, picture.image.bytes_per_pixel,
                picture.image.bits_per_pixel);
    std::printf("%-9s %11s  %8s %9s %8s  %8s %9s %8s\n", "", "bits/sample", "compress", "ns/sample",
                "tesk is", "decompr.", "ns/sample", "tesk is");
    for (const Entry& entry : entries) {
        std::printf("%-9s ", entry.peer->name());
        if (!entry.failure.empty()) {
            std::printf("%s\n", entry.failure.c_str());
            continue;
        }
        std::printf("%11.3f", 8.0 * static_cast<double>(entry.streamBytes) /
                                  static_cast<double>(picture.samples()));
        printDirection(picture, entry.compressSeconds, entries[0].compressSeconds);
        printDirection(picture, entry.decompressSeconds, entries[0].decompressSeconds);
        std::printf("\n");
    }
    std::printf("\n");
}

/// Returns: whether every codec gave the image back.
bool comparePicture(const Picture& picture, int rounds) {
    std::vector<Entry> entries = makeEntries();
    Bytes room(picture.streamRoomBytes());
    Bytes pixels(picture.pixels.size());
    for (int round = 0; round < rounds; ++round)
        for (Entry& entry : entries)
            if (entry.failure.empty()) tryOnce(entry, picture, room, pixels);
    printEntries(picture, entries);
    return std::all_of(entries.begin(), entries.end(),
                       [](const Entry& entry) { return entry.failure.empty(); });
}

}  // namespace

int main(int argc, char** argv) {
    const qmx::CCpuLevelGuard guard(test::takeCpuLevel(argc, argv));
    const int rounds = bench::takeRounds(argc, argv, kDefaultRounds);
    std::vector<Picture> pictures;
    if (!bench::takePictures(argc, argv, pictures)) return 1;
    if (argc > 1) {
        std::fprintf(stderr, "%s: the head of bench/peers.cpp names the arguments\n", argv[1]);
        return 1;
    }
    if (pictures.empty()) pictures = bench::generatedPictures();
    std::printf(
        "CPU level of tesk: %s; MB/s and ns/sample of the fastest of %d rounds; \"tesk is\": how "
        "many times as fast\n\n",
        nameOf(qmx::activeCpuLevel()), rounds);
    bool allCameBack = true;
    for (const Picture& picture : pictures)
        allCameBack = comparePicture(picture, rounds) && allCameBack;
    return allCameBack ? 0 : 1;
}
