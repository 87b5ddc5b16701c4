#pragma once

#include <gtest/gtest.h>
#include <map>
#include <memory_resource>

#include "api/tesk.h"
#include "support/GuardedBuffer.h"

namespace test {

/// Memory for the codec, each piece between two pages that may not be touched. Its alignment may leave some
/// bytes between a piece and the page behind it: they have to stay as they are. Pieces hold no zeros at first.
class GuardedHeap final : public std::pmr::memory_resource {
public:
    explicit GuardedHeap(Side pieceSide) : side(pieceSide) {}
    /// What was not released is reported here.
    ~GuardedHeap() override { EXPECT_TRUE(pieces.empty()); }

    /// For codecs of the C interface, which this heap has to outlive.
    tesk_options options() {
        tesk_options chosen = TESK_OPTIONS_INIT;
        chosen.allocate = [](void* user, std::size_t sizeBytes) {
            return static_cast<GuardedHeap*>(user)->allocate(sizeBytes);
        };
        chosen.release = [](void* user, void* piece) {
            static_cast<GuardedHeap*>(user)->release(piece);
        };
        chosen.user = this;
        return chosen;
    }

private:
    static constexpr unsigned char kFiller = 0xA5;

    struct Piece {
        Piece(std::size_t pieceBytes, std::size_t alignmentBytes)
            : sizeBytes(pieceBytes),
              alignedBytes((pieceBytes + alignmentBytes - 1) / alignmentBytes * alignmentBytes),
              room(alignedBytes) {}

        std::size_t sizeBytes;
        std::size_t alignedBytes;
        BorrowedRoom room;
    };

    void* do_allocate(std::size_t sizeBytes, std::size_t alignmentBytes) override {
        auto piece = std::make_unique<Piece>(sizeBytes, alignmentBytes);
        unsigned char* const first = piece->room->place(piece->alignedBytes, side);
        std::fill_n(first, piece->alignedBytes, kFiller);
        pieces[first] = std::move(piece);
        return first;
    }
    void do_deallocate(void* memory, std::size_t, std::size_t) override { release(memory); }
    bool do_is_equal(const memory_resource& other) const noexcept override {
        return this == &other;
    }

    void release(void* memory) {
        const auto* first = static_cast<const unsigned char*>(memory);
        const Piece& piece = *pieces.at(memory);
        EXPECT_TRUE(std::all_of(first + piece.sizeBytes, first + piece.alignedBytes,
                                [](unsigned char byte) { return byte == kFiller; }))
            << "written behind " << piece.sizeBytes << " bytes";
        pieces.erase(memory);
    }

    Side side;
    std::map<void*, std::unique_ptr<Piece>> pieces;
};

}  // namespace test
