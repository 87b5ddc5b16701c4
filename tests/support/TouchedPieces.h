#pragma once

#include <csignal>
#include <cstdint>

#include "api/tesk.h"
#include "support/GuardedBuffer.h"

namespace test {

/// Memory in pieces of whole pages that notices when it is touched, which is when a codec can be stopped at
/// the moment at which it reads or writes a certain row. A piece is out of reach until it is touched, and
/// again as soon as some others were.
class TouchedPieces {
public:
    static constexpr std::size_t kNever = ~std::size_t{0};

    /// mostOpen: how many pieces are in reach at a time: 2 or more, because an instruction may need two.
    TouchedPieces(std::size_t leastBytes, std::size_t pieces, std::size_t mostOpen = 2)
        : bytesOfPiece(wholePages(leastBytes)), room(bytesOfPiece * pieces), open(mostOpen) {}

    static std::size_t wholePages(std::size_t sizeBytes) {
        const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        return (sizeBytes + pageBytes - 1) / pageBytes * pageBytes;
    }

    unsigned char* begin() const { return room.begin(); }
    std::size_t pieceBytes() const { return bytesOfPiece; }

    /// While it lives, touches are noticed, one object at a time. Counts from 0.
    class Watch {
    public:
        explicit Watch(TouchedPieces& pieces) {
            pieces.startWatch();
            watched = &pieces;
            struct sigaction action {};
            action.sa_sigaction = onFault;
            action.sa_flags = SA_SIGINFO;
            sigaction(SIGSEGV, &action, &before);
        }
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
        ~Watch() {
            sigaction(SIGSEGV, &before, nullptr);
            watched->protect(watched->begin(), watched->allBytes(), PROT_READ | PROT_WRITE);
            watched = nullptr;
        }
    };

    /// Since the last watch began.
    std::size_t touches = 0;
    std::size_t touchesSinceStop = 0;
    /// The touch that stops a codec, counted from 0.
    std::size_t stopAt = kNever;
    tesk_codec* stopped = nullptr;

private:
    static void onFault(int number, siginfo_t* info, void*) {
        if (!watched->contains(info->si_addr)) {
            // Another fault is a crash, as it would be without this.
            sigaction(number, &before, nullptr);
            return;
        }
        const auto* address = static_cast<unsigned char*>(info->si_addr);
        watched->touch(static_cast<std::size_t>(address - watched->begin()) /
                       watched->bytesOfPiece);
    }

    void startWatch() {
        touches = touchesSinceStop = 0;
        std::fill(open.begin(), open.end(), kNever);
        protect(begin(), allBytes(), PROT_NONE);
    }

    void touch(std::size_t piece) {
        std::size_t& oldest = open[touches % open.size()];
        if (oldest != kNever) protect(begin() + oldest * bytesOfPiece, bytesOfPiece, PROT_NONE);
        oldest = piece;
        protect(begin() + piece * bytesOfPiece, bytesOfPiece, PROT_READ | PROT_WRITE);
        if (touches > stopAt) ++touchesSinceStop;
        if (touches == stopAt) tesk_stop(stopped);
        ++touches;
    }

    std::size_t allBytes() const { return static_cast<std::size_t>(room.end() - begin()); }
    bool contains(const void* address) const {
        return address >= begin() && address < begin() + allBytes();
    }
    static void protect(unsigned char* first, std::size_t sizeBytes, int access) {
        mprotect(first, sizeBytes, access);
    }

    static inline TouchedPieces* watched = nullptr;
    static inline struct sigaction before {};

    std::size_t bytesOfPiece;
    GuardedRoom room;
    /// The pieces in reach, in turn.
    std::vector<std::size_t> open;
};

}  // namespace test
