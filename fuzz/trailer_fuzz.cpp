// Any bytes as a file: looking for a trailer never reads outside, and its boxes fill the file. Any boxes as
// a trailer: what is written is found again, with the checksum that it should have.

#include "FuzzInput.h"
#include "FuzzMemory.h"
#include "trailer/CTrailerWriter.h"
#include "trailer/Trailer.h"

namespace {

using fuzz::Bytes;
using fuzz::FuzzInput;

class CCheckedBytes final : public qmx::IPlacedBytes {
public:
    explicit CCheckedBytes(const Bytes& file) : bytes(file) {}

    std::uint64_t sizeBytes() const override { return bytes.sizeBytes(); }
    void read(std::uint64_t offset, std::span<unsigned char> to) const override {
        fuzz::require(offset <= sizeBytes() && to.size() <= sizeBytes() - offset,
                      "what is read is in the file");
        bytes.read(offset, to);
    }

private:
    qmx::CMemoryBytes bytes;
};

void requireWhole(const Bytes& file, const qmx::Trailer& trailer) {
    fuzz::require(trailer.boxes.size() < qmx::kMostBoxes, "boxes are not many");
    std::uint64_t next = trailer.boxesOffset();
    for (const qmx::TrailerBox& box : trailer.boxes) {
        fuzz::require(box.name.size() == qmx::kBoxNameBytes, "a name has four bytes");
        fuzz::require(box.offset == next + qmx::kBoxHeaderBytes, "boxes follow each other");
        next = box.offset + box.sizeBytes;
    }
    fuzz::require(next + qmx::kTrailerEndBytes == file.size(), "boxes fill the file");
    fuzz::require(trailer.streamBytes + trailer.sizeBytes() == file.size(), "so does the trailer");
}

/// Everything that is found in a file whose stream may have any length.
void lookFor(const Bytes& file, std::uint64_t streamBytes) {
    const CCheckedBytes bytes(file);
    const auto place = qmx::placeOfTrailer(bytes);
    const auto trailer = qmx::findTrailer(bytes, streamBytes);
    fuzz::require(!trailer || place == streamBytes, "a trailer begins where the stream ends");
    // The place that the file itself names leads further into it than a guess.
    for (const auto& found : {trailer, place ? qmx::findTrailer(bytes, *place) : std::nullopt}) {
        if (!found) continue;
        requireWhole(file, *found);
        qmx::checksumOf(bytes, *found);
    }
}

/// Returns: up to 63 boxes with the numbers from 0 on as names.
std::vector<Bytes> someBoxes(FuzzInput& input) {
    std::vector<Bytes> boxes(input.below(qmx::kMostBoxes));
    for (Bytes& box : boxes) {
        box.resize(input.below(64));
        for (unsigned char& byte : box)
            byte = static_cast<unsigned char>(input.number(1));
    }
    return boxes;
}

std::string nameOf(std::size_t box) {
    return {static_cast<char>(box), 'b', 'o', 'x'};
}

void writeAndFind(const Bytes& data) {
    FuzzInput input(data.data(), data.size());
    const std::vector<Bytes> boxes = someBoxes(input);
    Bytes file = input.rest();
    const std::size_t streamBytes = file.size();
    qmx::CTrailerWriter writer;
    for (std::size_t i = 0; i < boxes.size(); ++i)
        writer.add(nameOf(i), boxes[i]);
    const Bytes written = writer.finish(file);
    file.insert(file.end(), written.begin(), written.end());

    const auto trailer = qmx::findTrailer(CCheckedBytes(file), streamBytes);
    fuzz::require(trailer && trailer->boxes.size() == boxes.size(), "what is written is found");
    requireWhole(file, *trailer);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        const qmx::TrailerBox& box = trailer->boxes[i];
        const auto begin = file.begin() + static_cast<std::ptrdiff_t>(box.offset);
        fuzz::require(box.name == nameOf(i) && Bytes(begin, begin + box.sizeBytes) == boxes[i],
                      "a box is what was put in");
    }
    fuzz::require(qmx::checksumOf(CCheckedBytes(file), *trailer) == trailer->crc,
                  "the checksum is right");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    const Bytes bytes(data, data + size);
    FuzzInput input(data, size);
    const std::uint64_t streamBytes = input.number(2);
    lookFor(input.rest(), streamBytes);
    lookFor(bytes, streamBytes);
    writeAndFind(bytes);
    return 0;
}
