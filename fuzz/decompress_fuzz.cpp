// Any bytes as a stream file, decoded in every way: from memory, through the file reader, by the
// in-memory object and by the C interface. Every way gives the same status and the same pixels; for
// small images those of the reference. All of it at every CPU level, and reduced pictures, too.

#include "FuzzCodec.h"
#include "FuzzLevels.h"
#include "bitstream/CBitFileReader.h"
#include "reference/ReferenceDecoder.h"

namespace {

using fuzz::Bytes;
/// The image, and one of its reduced pictures where it has any.
using Outcomes = std::vector<fuzz::Outcome>;

/// The reference takes its time.
constexpr std::uint64_t kMostReferenceBytes = 2048;

fuzz::Outcome decodeFile(Bytes& stream, const qmx::TKHeader& header) {
    std::FILE* file = fmemopen(stream.data(), stream.size(), "rb");
    fuzz::require(file != nullptr, "the stream opens as a file");
    std::fseek(file, sizeof header, SEEK_SET);
    qmx::CBitFileReader reader(file, true);
    return fuzz::decode(header, reader, qmx::MostBitsOfShort::inFiles);
}

void checkProbe(const Bytes& stream, const qmx::TKHeader& header) {
    tesk_image image = TESK_IMAGE_INIT;
    const tesk_status status = tesk_probe(stream.data(), stream.size(), &image);
    fuzz::require((status == TESK_INVALID_STREAM) == !header.isRecognised(), "only magic counts");
    if (status == TESK_INVALID_STREAM) return;
    fuzz::require((status == TESK_OK) == header.isSupported(), "probe tells what is supported");
    fuzz::require(image.width == header.xSize && image.height == header.ySize, "probe is right");
}

/// Returns: levels for a reduced picture, from the last byte; 0 when the image has none.
std::uint32_t chosenLevels(const Bytes& stream, const qmx::TKHeader& header) {
    const int levels = qmx::levelCount(header.xSize, header.ySize);
    return levels < 1 ? 0 : 1 + stream.back() % static_cast<std::uint32_t>(levels);
}

/// Adds a reduced picture. Requires: outcomes has the image.
void addReduced(const Bytes& stream, const qmx::TKHeader& header, Outcomes& outcomes) {
    fuzz::require(fuzz::reduceC(stream, 0) == outcomes[0], "no reduction is the image");
    const std::uint32_t levels = chosenLevels(stream, header);
    if (levels == 0) return;
    const fuzz::Outcome reduced = fuzz::reduceC(stream, levels);
    const bool lacksMemory =
        reduced.status == fuzz::kNoMemory || outcomes[0].status == fuzz::kNoMemory;
    fuzz::require(lacksMemory || reduced.status == outcomes[0].status, "the status is the same");
    outcomes.push_back(reduced);
}

/// Returns: the outcomes of a stream with a layout, the same in every way of decoding.
Outcomes decodeInEveryWay(Bytes& stream, const qmx::TKHeader& header) {
    qmx::CBitReader reader(stream.data() + sizeof header, stream.size() - sizeof header);
    const fuzz::Outcome expected = fuzz::decode(header, reader, qmx::MostBitsOfShort::inMemory);
    fuzz::require(fuzz::decodeObject(stream) == expected, "the object agrees with the classes");
    if (fuzz::profilesAgree(header))
        fuzz::require(decodeFile(stream, header) == expected, "the file reader agrees");
    Outcomes outcomes{expected};
    if (!header.isRecognised()) return outcomes;
    fuzz::require(fuzz::decodeC(stream, header) == expected, "the C interface agrees");
    addReduced(stream, header, outcomes);
    return outcomes;
}

void requireReference(const Bytes& stream, const qmx::TKHeader& header, const Outcomes& outcomes) {
    const std::vector<reference::Decoded> pictures = reference::decodeReduced(stream);
    if (pictures.empty())
        return fuzz::require(outcomes[0].status == qmx::kInvalidSection,
                             "the reference refuses it");
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const reference::Decoded& picture = pictures[i == 0 ? 0 : chosenLevels(stream, header)];
        fuzz::require(picture.status == outcomes[i].status, "the reference has this status");
        fuzz::require(picture.bytes == outcomes[i].pixels, "the reference has these pixels");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    Bytes stream(data, data + size);
    if (size <= sizeof(qmx::TKHeader)) {
        fuzz::require(fuzz::decodeObject(stream).status == qmx::kInvalidSection,
                      "a stream without bits gives no image");
        return 0;
    }
    qmx::TKHeader header;
    std::memcpy(&header, data, sizeof header);
    checkProbe(stream, header);
    if (!header.isSupported()) return 0;

    const Outcomes outcomes =
        fuzz::sameAtEveryCpuLevel([&] { return decodeInEveryWay(stream, header); });
    if (fuzz::profilesAgree(header) && header.isRecognised() &&
        header.rawBytes() <= kMostReferenceBytes)
        requireReference(stream, header, outcomes);
    return 0;
}
