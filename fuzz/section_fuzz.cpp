// Any bits as section headers: what is read, written again, gives the same bits, at every CPU level.

#include "FuzzLevels.h"
#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "coding/syntax/SectionSyntax.h"

namespace {

/// Writes a header at the bit position at which it was read and compares.
void checkRewritten(const qmx::SectionHeader& header, int countBits, const fuzz::Bytes& bits,
                    std::uint64_t firstBit, std::uint64_t endBit) {
    fuzz::Bytes copy(bits.size() + 16);
    qmx::CBitWriter writer(copy.data(), copy.size());
    for (std::uint64_t bit = 0; bit < firstBit; ++bit)
        writer.writeBit((unsigned{bits[bit / 8]} >> (bit % 8)) & 1U);
    qmx::writeSectionHeader(writer, header, countBits);
    writer.flush();
    fuzz::require(writer.getTotal() == endBit, "a header has one length");
    for (std::uint64_t bit = firstBit; bit < endBit; ++bit)
        fuzz::require(((unsigned{copy[bit / 8]} ^ bits[bit / 8]) >> (bit % 8) & 1U) == 0,
                      "a header is written as it is read");
}

/// Reads headers until the end mark or the end of the data. Returns: the bits that were read.
std::uint64_t checkHeaders(const fuzz::Bytes& bits, int countBits) {
    qmx::CBitReader reader(bits.data(), bits.size());
    try {
        const int top = qmx::readTopPlane(reader);
        fuzz::require(top >= -1 && top < 255, "the top plane has its range");
        for (;;) {
            const std::uint64_t first = reader.getTotal();
            qmx::SectionHeader header{};
            if (!qmx::readSectionHeader(reader, header, countBits)) break;
            fuzz::require(header.plane >= 0 && header.plane < 3, "3 is the end mark");
            fuzz::require(header.order >= 0 && header.order < 8, "an order has 3 bits");
            const int lengthBits = qmx::lengthFieldBits(countBits, header.order);
            if (lengthBits >= 0) checkRewritten(header, countBits, bits, first, reader.getTotal());
            reader.skip(header.lengthBits);
        }
    } catch (int number) {
        fuzz::require(number == qmx::kThrownEndOfStream, "only the end of the data throws");
    }
    return reader.getTotal();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const int width = static_cast<int>(input.number(2));
    const int height = static_cast<int>(input.number(2));
    const int countBits = qmx::sampleCountBits(width, height);
    const fuzz::Bytes bits = input.rest();
    fuzz::sameAtEveryCpuLevel([&] { return checkHeaders(bits, countBits); });
    return 0;
}
