#include "coding/decode/CReceivedSections.h"

#include "bitstream/Status.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

template <class T>
CReceivedSections<T>::CReceivedSections(const ImageShape& imageShape,
                                        std::pmr::memory_resource* memory, int reduction)
    : imageSize(imageShape),
      imageLevels(levelCount(imageSize.width, imageSize.height)),
      reducedLevels(reduction),
      countBits(sampleCountBits(imageSize.width, imageSize.height)),
      workMemory(memory) {}

/// Forgets all sections and makes room for those of another stream.
template <class T>
void CReceivedSections<T>::begin(int topPlane) {
    highestPlane = topPlane;
    nextPlanes.reset(topPlane);
    const int bitPlanes = std::min(topPlane + 1, kTableBitPlanes<T>);
    coders.emplace(TableSize::of(imageSize.planes, levels(), bitPlanes), workMemory);
}

template <class T>
void CReceivedSections<T>::assignSignificance(CBitReader& in, int plane, int order,
                                              std::uint64_t lengthBits) {
    const std::int64_t bitPlane = nextPlanes.take(plane, order, false);
    PlaneReaders* const readers = coders->find(plane, order, bitPlane);
    if (readers == nullptr) return;
    CBitInfiniteReader& reader = readers->significance;
    // An empty section has no payload of its own; what follows belongs to others.
    if (lengthBits != 0) {
        reader.create(&in, lengthBits);
        const bool isInMemory = reader.filePosition().file == nullptr;
        readers->significanceEnd = isInMemory ? reader.getTotal() + lengthBits : kNoEnd;
    }
    readers->decoder.attach(&reader);
}

template <class T>
void CReceivedSections<T>::assignRefinement(CBitReader& in, int plane, int order,
                                            std::uint64_t lengthBits) {
    const std::int64_t bitPlane = nextPlanes.take(plane, order, true);
    PlaneReaders* const readers = coders->find(plane, order, bitPlane);
    if (readers != nullptr) readers->refinement.create(&in, lengthBits);
}

template <class T>
void CReceivedSections<T>::assign(CBitReader& in, const SectionHeader& section) {
    const int order = section.order - reducedLevels;
    if (order < 0) return;
    if (section.isRefinement) {
        assignRefinement(in, section.plane, order, section.lengthBits);
    } else {
        assignSignificance(in, section.plane, order, section.lengthBits);
    }
}

template <class T>
int CReceivedSections<T>::readSections(CBitReader& in, int sectionLimit, const CStopRequest& stop) {
    const SectionBounds bounds{imageSize.planes, imageLevels, countBits};
    begin(readTopPlane(in));
    SectionHeader section;
    for (int count = 1;; ++count) {
        const NextSection next = readNextSection(in, section, bounds);
        if (next == NextSection::endMark) return kComplete;
        if (next == NextSection::foreign) return kInvalidSection;
        assign(in, section);
        if (stop.isSet()) return kKilled;
        in.skip(section.lengthBits);
        if (count == sectionLimit) return kCut;
    }
}

template <class T>
int CReceivedSections<T>::read(CBitReader& in, int sectionLimit, const CStopRequest& stop) {
    begin(-1);
    try {
        return readSections(in, sectionLimit, stop);
    } catch (int) {
        return kCut;  // the data ended
    }
}

template class CReceivedSections<short>;
template class CReceivedSections<int>;

}  // namespace qmx
