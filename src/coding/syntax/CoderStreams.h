#pragma once

#include <cstdint>
#include <memory>

#include "bitstream/CBitDecoder.h"
#include "bitstream/CBitEncoder.h"
#include "bitstream/CBitInfiniteReader.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

/// Colour planes that the tables have room for. Implementation limit; images have at most 3.
inline constexpr int kTablePlanes = 4;
/// Colour planes of a decoder: no section of another one is accepted.
inline constexpr int kDecoderPlanes = 3;
/// Bit planes that the tables have room for: as many as the coefficient type has bits. A stream may
/// name higher ones; they carry nothing (Quirk 13). Format: docs/format.md, 8 Folded values and top plane.
template <class T>
inline constexpr int kTableBitPlanes = 8 * static_cast<int>(sizeof(T));

/// One element for each colour plane, order and bit plane.
template <class T, class Element, int Planes = kTablePlanes>
class CSectionTable {
public:
    /// Returns: the element, or null outside the table: the coordinates may come from a stream.
    Element* find(int plane, int order, std::int64_t bitPlane) {
        const bool inside = plane >= 0 && plane < Planes && order >= 0 && order < kMaxOrders &&
                            bitPlane >= 0 && bitPlane < kTableBitPlanes<T>;
        return inside ? &elements[plane][order][bitPlane] : nullptr;
    }

    /// Returns: the kTableBitPlanes<T> elements of one plane and order. Requires: both inside.
    Element* bitPlanes(int plane, int order) { return elements[plane][order]; }

    template <class Visit>
    void forEach(Visit visit) {
        for (auto& plane : elements)
            for (auto& order : plane)
                for (auto& element : order)
                    visit(element);
    }

private:
    Element elements[static_cast<std::size_t>(Planes)][kMaxOrders][kTableBitPlanes<T>]{};
};

/// All coders of an encoder, in one block.
template <class T>
struct EncoderStreams {
    /// Requires: memory outlives the streams.
    explicit EncoderStreams(std::pmr::memory_resource* memory) {
        encoders.forEach([=](CBitChunkEncoder& encoder) { encoder.writer().useMemory(memory); });
        refinements.forEach([=](CBitChunkWriter& writer) { writer.useMemory(memory); });
    }

    /// Empties the coders of one plane and order. Requires: both inside the tables.
    void restart(int plane, int order, std::pmr::memory_resource* memory) {
        for (int p = 0; p < kTableBitPlanes<T>; ++p) {
            CBitChunkEncoder& encoder = encoders.bitPlanes(plane, order)[p];
            CBitChunkWriter& refinement = refinements.bitPlanes(plane, order)[p];
            std::destroy_at(&encoder);
            std::construct_at(&encoder)->writer().useMemory(memory);
            std::destroy_at(&refinement);
            std::construct_at(&refinement)->useMemory(memory);
            newCounts.bitPlanes(plane, order)[p] = 0;
        }
    }

    /// Significance: run codes and signs of the n sections.
    CSectionTable<T, CBitChunkEncoder> encoders;
    /// Coefficients whose highest bit lies in a bit plane.
    CSectionTable<T, std::uint64_t> newCounts;
    /// Refinement: raw bits of the u sections.
    CSectionTable<T, CBitChunkWriter> refinements;
};

/// All coders of a decoder, in one block.
template <class T>
struct DecoderStreams {
    CSectionTable<T, CBitDecoder, kDecoderPlanes> decoders;
    CSectionTable<T, CBitInfiniteReader, kDecoderPlanes> significances;
    CSectionTable<T, CBitInfiniteReader, kDecoderPlanes> refinements;
};

}  // namespace qmx
