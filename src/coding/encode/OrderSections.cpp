#include "coding/encode/OrderSections.h"

#include <algorithm>

namespace qmx {

void OrderSections::begin(PlaneSections* storage, int planeCount, std::uint64_t coefficients,
                          CMemoryPool& memoryOfChunks, CMemoryPool& memoryOfQueues) {
    constexpr std::uint64_t kLeastWords = 16;
    *this = {};
    bitPlanes = storage;
    planes = planeCount;
    chunkMemory = &memoryOfChunks;
    queueMemory = &memoryOfQueues;
    // One bit for each coefficient.
    firstWords = static_cast<int>(
        std::clamp<std::uint64_t>(coefficients / kWordBits, kLeastWords, kFirstChunkWords));
    // All events of a small order, in whole groups and a group to spare.
    eventsOfQueue = static_cast<std::size_t>(
        std::min<std::uint64_t>((coefficients / kGroupSize + 2) * kGroupSize, EventQueue::kEvents));
    std::fill_n(storage, planeCount, PlaneSections{});
}

void OrderSections::encode(std::uint64_t folded) {
    const std::uint64_t magnitude = folded >> 1;
    const int newPlane = bitLength(magnitude) - 1;
    for (int p = 0; p < newPlane; ++p) {
        makeRoomForBits(p);
        bitPlanes[p].refinement.append((magnitude >> p) & 1, 1);
        ++bitPlanes[p].excluded;
    }
    makeRoomForRuns(newPlane);
    PlaneSections& sections = bitPlanes[newPlane];
    appendEvent(sections.significance, sections.run(position), folded & 1);
    sections.coded = position - sections.excluded + 1;
    ++sections.newCount;
}

void OrderSections::close(int p) {
    const PlaneSections& sections = bitPlanes[p];
    if (sections.significanceBits() != 0) appendRun(p, sections.run(position));
    leaveOpen(p);
}

void OrderSections::appendRun(int p, std::uint64_t run) {
    makeRoomForRuns(p);
    appendRunCode(bitPlanes[p].significance, run, 0, 0);
}

void OrderSections::growRuns(int p) {
    PlaneSections& sections = bitPlanes[p];
    sections.significanceChunks.makeRoom(sections.significance, firstWords, *chunkMemory);
}

void OrderSections::growBits(int p) {
    PlaneSections& sections = bitPlanes[p];
    sections.refinementChunks.makeRoom(sections.refinement, firstWords, *chunkMemory);
}

void OrderSections::makeQueue(int p) {
    queues[p].events =
        static_cast<std::uint16_t*>(queueMemory->take(eventsOfQueue * sizeof(std::uint16_t)));
    queues[p].room = eventsOfQueue;
}

}  // namespace qmx
