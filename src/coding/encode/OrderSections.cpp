#include "coding/encode/OrderSections.h"

namespace qmx {

void OrderSections::begin(SectionPair* pairStorage, EventQueue* queueStorage,
                          CBitChunkEncoder* runCoders, CBitChunkWriter* rawCoders, int planeCount) {
    pairs = pairStorage;
    queues = queueStorage;
    encoders = runCoders;
    refinements = rawCoders;
    planes = planeCount;
    for (int p = 0; p < planes; ++p) {
        pairs[p] = {ByteBatch(encoders[p].writer().beginBatch()), refinements[p].beginBatch(), 0,
                    std::uint64_t{0} - encoders[p].getRun(), 0};
        queues[p].count = 0;
        queues[p].base = 0;
    }
}

void OrderSections::end(std::uint64_t* newCounts) {
    for (int p = 0; p < planes; ++p) {
        SectionPair& pair = pairs[p];
        encoders[p].writer().endBatch(pair.significance);
        refinements[p].endBatch(pair.refinement);
        encoders[p].addCoded(pair.coded + encoders[p].getRun());
        encoders[p].setRun(pair.run(position));
        newCounts[p] += pair.newCount;
    }
}

void OrderSections::encode(std::uint64_t folded) {
    const std::uint64_t magnitude = folded >> 1;
    const int newPlane = bitLength(magnitude) - 1;
    for (int p = 0; p < newPlane; ++p) {
        makeRoomForBits(p);
        pairs[p].refinement.append((magnitude >> p) & 1, 1);
        ++pairs[p].excluded;
    }
    makeRoomForRuns(newPlane);
    SectionPair& pair = pairs[newPlane];
    appendEvent(pair.significance, pair.run(position), folded & 1);
    pair.coded = position - pair.excluded + 1;
    ++pair.newCount;
}

void OrderSections::growRuns(int p) {
    encoders[p].writer().makeRoom(pairs[p].significance);
}

void OrderSections::growBits(int p) {
    refinements[p].makeRoom(pairs[p].refinement);
}

}  // namespace qmx
