#include "bitstream/CBitLazyWriter.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace qmx {

CBitLazyWriter::CBitLazyWriter(std::uint64_t blockSizeBytes, bool ownsItsBlock)
    : CBitWriter(nullptr, 0), blockSize(blockSizeBytes), ownsBlock(ownsItsBlock) {
    buffer = reinterpret_cast<unsigned char*>(&inlineWord);
}

CBitLazyWriter::~CBitLazyWriter() {
    if (void* block = takeOwnedBlock()) CBitLazyWriter::deleteBlock(block);
}

void* CBitLazyWriter::takeOwnedBlock() {
    if (!ownsBlock || !hasBlock()) return nullptr;
    void* block = buffer;
    buffer = reinterpret_cast<unsigned char*>(&inlineWord);
    return block;
}

void CBitLazyWriter::flushBuffer() {
    if (hasBlock()) CBitWriter::flushBuffer();
    void* block = allocateBlock(blockSize);
    if (block == nullptr) {
        stepBitBack();
        throw std::bad_alloc();
    }
    buffer = static_cast<unsigned char*>(block);
    bufferWords = static_cast<std::int64_t>(blockSize / kWordBytes);
    tailBytes = static_cast<std::uint32_t>(blockSize % kWordBytes);
}

void CBitLazyWriter::setSize(std::uint64_t sizeBytes) {
    if (!hasBlock()) blockSize = sizeBytes;
}

void* CBitLazyWriter::allocateBlock(std::uint64_t sizeBytes) {
    if (!std::in_range<std::size_t>(sizeBytes)) return nullptr;
    return allocateAligned(8, static_cast<std::size_t>(sizeBytes));
}

void CBitLazyWriter::deleteBlock(void* block) {
    std::free(block);
}

}  // namespace qmx
