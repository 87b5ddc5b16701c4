#include "PeerReport.h"

#include <cstdio>

#include "BenchJson.h"

namespace bench {
namespace {

/// Prints one direction of a codec, and how many times as fast the first one is.
void printDirection(const Picture& picture, double seconds, double firstSeconds) {
    std::printf("  %8.1f %9.3f %8.3f", static_cast<double>(picture.pixels.size()) / seconds / 1e6,
                seconds * 1e9 / static_cast<double>(picture.samples()), seconds / firstSeconds);
}

void printRow(const Picture& picture, const PeerFigures& peer, const PeerFigures& first) {
    std::printf("%-16s ", peer.peer->name());
    if (!peer.hasFigures()) {
        std::printf("%s%s\n", peer.refusal.c_str(), peer.failure.c_str());
        return;
    }
    std::printf("%11.3f", 8.0 * static_cast<double>(peer.streamBytes) /
                              static_cast<double>(picture.samples()));
    printDirection(picture, peer.compressSeconds, first.compressSeconds);
    printDirection(picture, peer.decompressSeconds, first.decompressSeconds);
    std::printf("\n");
}

void printJsonPeer(const PeerFigures& peer) {
    std::printf("{\"name\": %s, ", jsonText(peer.peer->name()).c_str());
    if (peer.hasFigures())
        std::printf("\"streamBytes\": %zu, \"compressSeconds\": %.9g, \"decompressSeconds\": %.9g}",
                    peer.streamBytes, peer.compressSeconds, peer.decompressSeconds);
    else
        std::printf("\"refusal\": %s}", jsonText(peer.refusal + peer.failure).c_str());
}

void printJsonPicture(const PictureFigures& figures) {
    std::printf("{");
    printJsonImage(figures.picture.name, figures.picture.image);
    std::printf("\"samples\": %zu, \"codecs\": [", figures.picture.samples());
    for (const PeerFigures& peer : figures.peers) {
        if (&peer != &figures.peers.front()) std::printf(", ");
        printJsonPeer(peer);
    }
    std::printf("]}");
}

}  // namespace

void printPeerTable(const PictureFigures& figures) {
    const Picture& picture = figures.picture;
    std::printf("%s: %u x %u, %u bytes and %u bits per pixel\n", picture.name.c_str(),
                picture.image.width, picture.image.height, picture.image.bytes_per_pixel,
                picture.image.bits_per_pixel);
    std::printf("%-16s %11s  %8s %9s %8s  %8s %9s %8s\n", "", "bits/sample", "compress",
                "ns/sample", "tesk is", "decompr.", "ns/sample", "tesk is");
    for (const PeerFigures& peer : figures.peers)
        printRow(picture, peer, figures.peers.front());
    std::printf("\n");
}

void printPeerJson(const std::vector<PictureFigures>& pictures, const char* level, int rounds) {
    std::printf("{\"level\": \"%s\", \"rounds\": %d, \"versions\": {", level, rounds);
    const std::vector<PeerFigures>& peers = pictures.front().peers;
    for (const PeerFigures& peer : peers)
        std::printf("%s%s: %s", &peer == &peers.front() ? "" : ", ",
                    jsonText(peer.peer->name()).c_str(), jsonText(peer.peer->version()).c_str());
    std::printf("},\n\"pictures\": [\n");
    for (const PictureFigures& picture : pictures) {
        printJsonPicture(picture);
        std::printf("%s\n", &picture == &pictures.back() ? "]}" : ",");
    }
}

}  // namespace bench
