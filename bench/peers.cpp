// tesk beside general lossless codecs and memcpy: memory to memory, one thread, the same images, in
// the same run.
//
// `peers [--cpu-level=LEVEL] [--rounds=N] [--own] [--json] [--image=FILE,BYTES/PIXEL,BITS/SAMPLE,WIDTH,HEIGHT ...]`.
// The level is that of tesk; with --own it runs without other codecs; without images it takes those of
// tesk_bench. tesk is there twice: as callers get it by default, with streams that are compared with their
// images, and without that. Every round runs every codec once, so that a slow moment of the machine
// meets all of them, and the fastest round counts; the slow ones run in the first round alone. Times are
// processor times of the process, helper threads of a library included: on an idle machine those of a clock,
// on a busy one still of use. The exit status is 1 when a codec does not give an image back.

#include <algorithm>
#include <cstdio>
#include <exception>

#include "BenchRuns.h"
#include "PeerReport.h"
#include "support/CpuLevelArgument.h"

namespace {

using bench::Bytes;
using bench::IPeer;
using bench::Peer;
using bench::PeerFigures;
using bench::Picture;
using bench::PictureFigures;

constexpr int kDefaultRounds = 7;

std::vector<Peer> otherPeers() {
    std::vector<Peer> peers;
#ifdef TESK_PEER_OPENJPH
    peers.push_back(bench::makeOpenjph());
#endif
#ifdef TESK_PEER_OPENJPEG
    peers.push_back(bench::makeOpenjpeg());
#endif
#ifdef TESK_PEER_CHARLS
    peers.push_back(bench::makeCharls());
#endif
#ifdef TESK_PEER_LIBJXL
    peers.push_back(bench::makeLibjxl(1));
    peers.push_back(bench::makeLibjxl(3));
    peers.push_back(bench::makeLibjxl(7));
#endif
#ifdef TESK_PEER_WEBP
    peers.push_back(bench::makeWebp());
#endif
#ifdef TESK_PEER_LIBPNG
    peers.push_back(bench::makeLibpng());
#endif
    return peers;
}

/// The first is tesk as callers get it.
std::vector<PeerFigures> makePeers(const Picture& picture, bool ownAlone) {
    std::vector<PeerFigures> all;
    const auto add = [&](Peer peer) {
        const char* refusal = peer->refusalOf(picture);
        all.emplace_back();
        all.back().peer = std::move(peer);
        if (refusal != nullptr) all.back().refusal = refusal;
    };
    add(bench::makeTesk(true));
    add(bench::makeTesk(false));
    if (!ownAlone)
        for (Peer& peer : otherPeers())
            add(std::move(peer));
    add(bench::makeMemcpy());
    return all;
}

/// Compresses and decompresses once.
void runOnce(PeerFigures& figures, const Picture& picture, Bytes& room, Bytes& pixels) {
    IPeer& peer = *figures.peer;
    const double compressing =
        bench::secondsOf([&] { figures.streamBytes = peer.compress(picture, room); });
    std::fill(pixels.begin(), pixels.end(), static_cast<unsigned char>(0));
    const std::span<const unsigned char> stream(room.data(), figures.streamBytes);
    const double decompressing =
        bench::secondsOf([&] { peer.decompress(stream, picture, pixels); });
    figures.compressSeconds = std::min(figures.compressSeconds, compressing);
    figures.decompressSeconds = std::min(figures.decompressSeconds, decompressing);
    if (pixels != picture.pixels) figures.failure = "the image does not come back";
}

void tryOnce(PeerFigures& figures, const Picture& picture, Bytes& room, Bytes& pixels) {
    try {
        runOnce(figures, picture, room, pixels);
    } catch (const std::exception& error) {
        figures.failure = error.what();
    }
}

PictureFigures comparePicture(const Picture& picture, int rounds, bool ownAlone) {
    PictureFigures figures{picture, makePeers(picture, ownAlone)};
    Bytes room(picture.streamRoomBytes());
    Bytes pixels(picture.pixels.size());
    for (int round = 0; round < rounds; ++round)
        for (PeerFigures& peer : figures.peers)
            if (peer.hasFigures() && (round == 0 || !peer.peer->isSlow()))
                tryOnce(peer, picture, room, pixels);
    return figures;
}

bool allCameBack(const PictureFigures& figures) {
    return std::all_of(figures.peers.begin(), figures.peers.end(),
                       [](const PeerFigures& peer) { return peer.failure.empty(); });
}

void printHead(int rounds) {
    std::printf(
        "CPU level of tesk: %s; MB/s and ns/sample of the fastest of %d rounds; \"tesk is\": how "
        "many times as fast\n\n",
        nameOf(qmx::activeCpuLevel()), rounds);
}

/// Returns: whether every codec gave every image back.
bool compareAll(const std::vector<Picture>& pictures, int rounds, bool ownAlone, bool asJson) {
    if (!asJson) printHead(rounds);
    std::vector<PictureFigures> all;
    for (const Picture& picture : pictures) {
        all.push_back(comparePicture(picture, rounds, ownAlone));
        if (!asJson) printPeerTable(all.back());
    }
    if (asJson) printPeerJson(all, nameOf(qmx::activeCpuLevel()), rounds);
    return std::all_of(all.begin(), all.end(), allCameBack);
}

}  // namespace

int main(int argc, char** argv) {
    const qmx::CCpuLevelGuard guard(test::takeCpuLevel(argc, argv));
    const int rounds = bench::takeRounds(argc, argv, kDefaultRounds);
    const bool ownAlone = bench::takeFlag(argc, argv, "--own");
    const bool asJson = bench::takeFlag(argc, argv, "--json");
    std::vector<Picture> pictures;
    if (!bench::takePictures(argc, argv, pictures)) return 1;
    if (argc > 1) {
        std::fprintf(stderr, "%s: the head of bench/peers.cpp names the arguments\n", argv[1]);
        return 1;
    }
    if (pictures.empty()) pictures = bench::generatedPictures();
    return compareAll(pictures, rounds, ownAlone, asJson) ? 0 : 1;
}
