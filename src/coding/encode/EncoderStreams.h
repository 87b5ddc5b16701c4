#pragma once

#include <cstdint>
#include <memory>

#include "bitstream/CBitEncoder.h"
#include "coding/syntax/CSectionTable.h"

namespace qmx {

/// All coders of an encoder.
template <class T>
struct EncoderStreams {
    /// For the sections of an image of so many colour planes and levels; how many samples a plane has
    /// decides what the sections take in advance. Requires: memory outlives the streams.
    /// Throws: std::bad_alloc.
    EncoderStreams(int planes, int levels, std::uint64_t samples,
                   std::pmr::memory_resource* streamMemory)
        : EncoderStreams(TableSize::of(planes, levels, kTableBitPlanes<T>), samples, streamMemory) {
    }

    /// Returns: about how many coefficients an order has, or more.
    std::uint64_t coefficients(int order) const { return samplesPerPlane >> (2 * order); }

    /// Empties the coders of one plane and order. Requires: both inside the tables.
    void restart(int plane, int order) {
        for (int p = 0; p < kTableBitPlanes<T>; ++p) {
            CBitChunkEncoder& encoder = encoders.bitPlanes(plane, order)[p];
            CBitChunkWriter& refinement = refinements.bitPlanes(plane, order)[p];
            std::destroy_at(&encoder);
            std::construct_at(&encoder);
            std::destroy_at(&refinement);
            std::construct_at(&refinement);
            newCounts.bitPlanes(plane, order)[p] = 0;
        }
        begin(plane, order);
    }

    std::uint64_t samplesPerPlane;
    std::pmr::memory_resource* memory;
    /// Significance: run codes and signs of the n sections.
    CSectionTable<CBitChunkEncoder> encoders;
    /// Newly significant coefficients: those whose highest bit lies in the bit plane.
    CSectionTable<std::uint64_t> newCounts;
    /// Refinement: raw bits of the u sections.
    CSectionTable<CBitChunkWriter> refinements;

private:
    EncoderStreams(const TableSize& size, std::uint64_t samples,
                   std::pmr::memory_resource* streamMemory)
        : samplesPerPlane(samples),
          memory(streamMemory),
          encoders(size, memory),
          newCounts(size, memory),
          refinements(size, memory) {
        for (int plane = 0; plane < size.planes; ++plane)
            for (int order = 0; order < size.orders; ++order)
                begin(plane, order);
    }

    void begin(int plane, int order) {
        constexpr std::uint64_t kLeastWords = 16;
        // One bit for each coefficient.
        const auto firstWords = static_cast<int>(std::clamp<std::uint64_t>(
            coefficients(order) / kWordBits, kLeastWords, kFirstChunkWords));
        for (int p = 0; p < kTableBitPlanes<T>; ++p) {
            encoders.bitPlanes(plane, order)[p].writer().useMemory(memory, firstWords);
            refinements.bitPlanes(plane, order)[p].useMemory(memory, firstWords);
        }
    }
};

}  // namespace qmx
