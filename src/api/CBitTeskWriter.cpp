#include "api/CBitTeskWriter.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "api/CTeskCompressor.h"

namespace qmx {
namespace {

constexpr std::uint64_t kHeaderBytes = sizeof(TKHeader);

}  // namespace

CBitTeskWriter::CBitTeskWriter(CTeskCompressor* owner, std::uint64_t budgetBytes,
                               std::uint64_t boundBytes, bool ownsItsBlock)
    // Without a budget the difference wraps, to a size that no allocation satisfies: then setSize
    // has to come first.
    : CBitLazyWriter(budgetBytes - kHeaderBytes, ownsItsBlock),
      compressor(owner),
      budget(budgetBytes) {
    if (budget != 0) blockSize = std::min(blockSize, boundBytes);
}

CBitTeskWriter::~CBitTeskWriter() {
    releaseBlock();
}

void CBitTeskWriter::releaseBlock() {
    if (void* block = takeOwnedBlock()) CBitTeskWriter::deleteBlock(block);
}

void CBitTeskWriter::setSize(std::uint64_t sizeBytes) {
    if (budget != 0) return;
    CBitLazyWriter::setSize(sizeBytes < kHeaderBytes ? sizeBytes : sizeBytes - kHeaderBytes);
}

void* CBitTeskWriter::allocateBlock(std::uint64_t sizeBytes) {
    // unsigned long has 32 bits on wasm32, and a size that wraps none at all: see the constructor.
    if (sizeBytes > std::numeric_limits<unsigned long>::max() - kHeaderBytes) return nullptr;
    void* block = compressor->allocBlock(static_cast<unsigned long>(sizeBytes + kHeaderBytes));
    if (block == nullptr) return nullptr;
    const TKHeader& header = *compressor;
    std::memcpy(block, &header, kHeaderBytes);
    return static_cast<unsigned char*>(block) + kHeaderBytes;
}

void CBitTeskWriter::deleteBlock(void* block) {
    compressor->freeBlock(static_cast<unsigned char*>(block) - kHeaderBytes);
}

unsigned char* CBitTeskWriter::getHeader() const {
    return hasBlock() ? getBlock() - kHeaderBytes : nullptr;
}

std::uint64_t CBitTeskWriter::getStoredBytes() const {
    // A block without room keeps its only bit, and counts more, without storing any (Quirk 1).
    return hasBlock() ? std::min((getTotal() + 7) / 8, blockSize) : 0;
}

}  // namespace qmx
