#pragma once

#include <limits>
#include <string>
#include <vector>

#include "IPeer.h"

// The figures of the peers, and how they are told: as tables for people, as JSON for tools/bench-figures.

namespace bench {

struct PeerFigures {
    Peer peer;
    std::size_t streamBytes = 0;
    double compressSeconds = std::numeric_limits<double>::infinity();
    double decompressSeconds = std::numeric_limits<double>::infinity();
    /// Empty, or why there are no figures: the codec does not take such pictures.
    std::string refusal;
    /// Empty, or why there are no figures: what the codec must do it did not.
    std::string failure;

    bool hasFigures() const { return refusal.empty() && failure.empty(); }
};

struct PictureFigures {
    const Picture& picture;
    /// The first is what all others are compared with.
    std::vector<PeerFigures> peers;
};

void printPeerTable(const PictureFigures& figures);
void printPeerJson(const std::vector<PictureFigures>& pictures, const char* level, int rounds);

}  // namespace bench
