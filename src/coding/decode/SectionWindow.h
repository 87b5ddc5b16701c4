#pragma once

#include <cstddef>
#include <cstdint>

#include "coding/decode/DecoderStreams.h"
#include "coding/syntax/CoefficientGroup.h"

namespace qmx {

/// Bits of a span that must be left where a group or a batch of signed runs is read from memory, so that all
/// its loads stay inside.
inline constexpr std::uint64_t kLoadBits = 128;

/// An n section that is parsed ahead of the coefficients. Its candidates, the coefficients that it
/// covers, are counted from the start of the window. A candidate is new, or fresh, when it becomes
/// significant in this bit plane. Behind a new one stands a signed run: its sign, and the run of zeros up to
/// the next.
///
///  - taken <= filled <= nextNew; filled is nextNew or kGroupSize more than the capacity
///  - at the end of the section, no more is parsed: what stands there covers all candidates, unless the stream is
///    damaged or the length of the section is false. Then `end` is kNoEnd, and parsing goes on behind it
///  - bits taken to filled - 1 of `fresh` and `negatives` say which candidates are new and which of
///    those are negative, the others have 0 there
///  - the candidates from filled to nextNew - 1 are not new, nextNew is: its sign has not been read
///  - bits behind filled do not count; in front of a refill all are 0 but those of nextNew, which may be set
struct SectionWindow {
    /// Bytes of a bitmap beyond its capacity: batches of runs and loads of words reach over it.
    static constexpr std::size_t kSlackBytes = 32;

    CBitDecoder* decoder;
    unsigned char* fresh;
    unsigned char* negatives;
    std::uint64_t taken;
    std::uint64_t filled;
    std::uint64_t nextNew;
    /// The total of the decoder's source where the section ends, or kNoEnd.
    std::uint64_t end;

    bool isAtEnd() const { return end != kNoEnd && decoder->source()->getTotal() >= end; }
};

/// Where a u section goes on. Bits up to `span.end` are read from memory, others by the reader.
struct RefinementBits {
    CBitInfiniteReader* reader;
    BitSpan span;
};

/// All sections of a colour plane and order.
template <class T>
struct OrderWindows {
    /// Bit planes that have an n section, inclusive; none when highest < lowest.
    int highest;
    int lowest;
    /// Bit planes above it have a u section; -1 when all have. At most the number of planes.
    int unrefined;
    /// Candidates that a window holds.
    std::uint32_t capacity;
    /// Coefficients that have not been decoded, or more.
    std::uint64_t left;
    /// Coefficients of the last group that belong to lines to come: the last heldCount of held, and of its evens
    /// in front of its odds; all are 0 where heldIsEmpty.
    int heldFirst;
    int heldCount;
    bool heldIsEmpty;
    T held[kGroupSize];
    T heldApart[kGroupSize];
    /// Groups for which every window is filled.
    std::uint32_t groupsReady;
    /// The highest bit plane with new coefficients in the groups that were ready after the last refill, and
    /// the one that groups usually begin at: lowest - 1 <= usualTop <= liveTop <= highest.
    int liveTop;
    int usualTop;
    /// Candidates that were taken since then from all bit planes above liveTop, whose windows do not know yet.
    std::uint32_t takenAbove;
    /// Groups for which the bits of all u sections below liveTop stand in memory; 0 while not all sections have come.
    std::uint64_t groupsLoaded;
    SectionWindow windows[kTableBitPlanes<T>];
    RefinementBits refinements[kTableBitPlanes<T>];
};

/// Reads the signed run at the place of a window's decoder, of any kind, and lets nextNew pass over
/// the run. Returns: whether the candidate that was new is negative. Throws: std::bad_alloc.
bool readSignedRunLiterally(SectionWindow& window);

/// Returns: the next 0 to 64 bits of a u section whose span does not hold them; the ones above are 0.
/// Throws: std::bad_alloc.
std::uint64_t readRefinementLiterally(RefinementBits& bits, int count);

}  // namespace qmx
