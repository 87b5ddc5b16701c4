// Any bytes as a stream file, decoded in every way: from memory, through the file reader, by the
// in-memory object and by the C interface. Every way gives the same status and the same pixels; for
// small images those of the reference. All of it at every CPU level.

#include "FuzzCodec.h"
#include "FuzzLevels.h"
#include "bitstream/CBitFileReader.h"
#include "reference/ReferenceDecoder.h"

namespace {

using fuzz::Bytes;

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

/// Returns: the outcome of a stream with a layout, the same in every way of decoding.
fuzz::Outcome decodeInEveryWay(Bytes& stream, const qmx::TKHeader& header) {
    qmx::CBitReader reader(stream.data() + sizeof header, stream.size() - sizeof header);
    const fuzz::Outcome expected = fuzz::decode(header, reader, qmx::MostBitsOfShort::inMemory);
    fuzz::require(fuzz::decodeObject(stream) == expected, "the object agrees with the classes");
    if (header.isRecognised())
        fuzz::require(fuzz::decodeC(stream, header) == expected, "the C interface agrees");
    if (fuzz::profilesAgree(header))
        fuzz::require(decodeFile(stream, header) == expected, "the file reader agrees");
    return expected;
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

    const fuzz::Outcome expected =
        fuzz::sameAtEveryCpuLevel([&] { return decodeInEveryWay(stream, header); });
    if (fuzz::profilesAgree(header) && header.isRecognised() &&
        header.rawBytes() <= kMostReferenceBytes) {
        const reference::Decoded decoded = reference::decode(stream);
        fuzz::require(decoded.status == expected.status, "the reference has this status");
        fuzz::require(decoded.bytes == expected.pixels, "the reference has these pixels");
    }
    return 0;
}
