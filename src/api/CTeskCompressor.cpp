#include "api/CTeskCompressor.h"

#include <atomic>
#include <cstdlib>

#include "api/CBitTeskWriter.h"
#include "api/CompressorLoss.h"
#include "bitstream/CAligned.h"
#include "bitstream/Memory.h"
#include "bitstream/Status.h"
#include "coding/encode/EncodeRows.h"
#include "container/Budget.h"
#include "container/CoefficientDispatch.h"

namespace qmx {
namespace {

constexpr unsigned long kBlockAlignmentBytes = 8;
// Part of the binary interface: programs make, derive from and delete such objects.
static_assert(sizeof(void*) != 8 || sizeof(CTeskCompressor) == 48);

std::unique_ptr<unsigned char[]> copyOf(const void* data, std::uint64_t rawBytes) {
    const std::size_t sizeBytes = sizeOfBytes(rawBytes);
    auto copy = std::make_unique_for_overwrite<unsigned char[]>(sizeBytes);
    if (sizeBytes != 0) std::memcpy(copy.get(), data, sizeBytes);
    return copy;
}

}  // namespace

struct CTeskCompressor::Job {
    Job(const TKHeader& header, const void* data)
        : bytes(copyOf(data, header.rawBytes())), pixels(bytes.get(), header.rawRowBytes()) {}

    std::unique_ptr<unsigned char[]> bytes;
    CPixelsInMemory pixels;
    CodedFacts facts;
    std::atomic<bool> isStopped{false};
};

CTeskCompressor::CTeskCompressor(int width, int height, int sampleBits, int pixelBytes,
                                 const void* data, unsigned long budgetBytes, bool ownsBlock)
    : CTeskHeader(makeHeader(pixelBytes, sampleBits, width, height)), status(kNotRun) {
    const bool hasRoomForHeader = budgetBytes == 0 || budgetBytes >= sizeof(TKHeader);
    if (!hasRoomForHeader) {
        status = kCut;
        return;
    }
    if (!isSupported()) return;
    const std::uint64_t boundBytes = dispatchCoefficients(
        *this, MostBitsOfShort::inMemory,
        [&]<class T>() { return completeStreamBoundBytes(*this, 8 * sizeof(T)); },
        [] { return std::uint64_t{0}; });
    writer = std::make_unique<CBitTeskWriter>(this, budgetBytes, boundBytes, ownsBlock);
    const TKHeader& header = *this;
    job = std::make_unique<Job>(header, data);
}

CTeskCompressor::~CTeskCompressor() = default;

template <class T>
int CTeskCompressor::encode() {
    CCodedSections<T> sections(shapeOf(*this), std::pmr::new_delete_resource());
    CPixelSource<T> source(job->pixels, bytesPerPixel);
    const CStopRequest stop(job->isStopped);
    if (!encodeRows(source, sections, {false, 0, stop}).isComplete) return kSuspended;
    writer->setSize(sections.estimateBytes());
    const bool fits = sections.writeWhatFits(*writer);
    job->facts = sections.facts();
    return fits ? kComplete : kCut;
}

int CTeskCompressor::compress() {
    if (status != kNotRun) return status;
    status = kCut;  // also behind an allocation that failed
    status = dispatchCoefficients(
        *this, MostBitsOfShort::inMemory, [&]<class T>() { return encode<T>(); },
        [] { return kInvalidSection; });
    return status;
}

void CTeskCompressor::stop() {
    if (job != nullptr) job->isStopped.store(true, std::memory_order_relaxed);
}

void CTeskCompressor::kill() {
    stop();
}

void* CTeskCompressor::allocBlock(unsigned long sizeBytes) {
    return allocateAligned(kBlockAlignmentBytes, sizeBytes);
}

void CTeskCompressor::freeBlock(void* block) {
    std::free(block);
}

unsigned char* CTeskCompressor::getBlock() const {
    return writer != nullptr ? writer->getHeader() : nullptr;
}

unsigned long CTeskCompressor::getStreamSize() const {
    if (getBlock() == nullptr) return 0;
    return sizeof(TKHeader) + static_cast<std::size_t>(writer->getStoredBytes());
}

LossReport findLoss(CTeskCompressor& compressor, bool hasRate) {
    const TKHeader& header = compressor;
    const CodedFacts& facts = compressor.job->facts;
    StreamFate fate;
    const auto storedBytes = static_cast<std::size_t>(compressor.writer->getStoredBytes());
    fate.stream = {compressor.getBlock() + sizeof header, storedBytes, facts.misreadBit};
    fate.isLossAskedFor = hasRate && fate.stream.sizeBytes < facts.streamBytes();
    const ImageJob job{header, compressor.job->pixels};
    LossReport report = findLoss(job, MostBitsOfShort::inMemory, facts, fate);
    // Decoders in memory take no header alone, though a header alone restores zeros elsewhere.
    const bool isHeaderAlone = fate.stream.sizeBytes == 0 && !hasRate;
    if (isHeaderAlone && report.loss == Loss::none) report.loss = Loss::cut;
    return report;
}

void CTeskCompressor::releaseBlock() {
    if (writer != nullptr) writer->releaseBlock();
}

}  // namespace qmx
