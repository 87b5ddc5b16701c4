#include "coding/encode/OrderSections.h"

namespace qmx {

void OrderSections::begin(PlaneSections* planeStorage, EventQueue* queueStorage,
                          CBitChunkEncoder* runCoders, CBitChunkWriter* rawCoders, int planeCount,
                          std::size_t queueEvents, std::pmr::memory_resource* queueMemory) {
    bitPlanes = planeStorage;
    queues = queueStorage;
    encoders = runCoders;
    refinements = rawCoders;
    planes = planeCount;
    eventsOfQueue = queueEvents;
    memory = queueMemory;
    for (int p = 0; p < planes; ++p)
        bitPlanes[p] = {ByteBatch(encoders[p].writer().beginBatch()), refinements[p].beginBatch(),
                        0, std::uint64_t{0} - encoders[p].getRun(), 0};
}

void OrderSections::end(std::uint64_t* newCounts) {
    for (int p = 0; p < planes; ++p) {
        PlaneSections& sections = bitPlanes[p];
        encoders[p].writer().endBatch(sections.significance);
        refinements[p].endBatch(sections.refinement);
        encoders[p].addCoded(sections.coded + encoders[p].getRun());
        encoders[p].setRun(sections.run(position));
        newCounts[p] += sections.newCount;
    }
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

void OrderSections::growRuns(int p) {
    encoders[p].writer().makeRoom(bitPlanes[p].significance);
}

void OrderSections::growBits(int p) {
    refinements[p].makeRoom(bitPlanes[p].refinement);
}

void OrderSections::makeQueue(int p) {
    queues[p].room = makeArray<std::uint16_t>(eventsOfQueue, memory);
    queues[p].events = queues[p].room.get();
}

}  // namespace qmx
