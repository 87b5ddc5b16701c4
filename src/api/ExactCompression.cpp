#include "api/ExactCompression.h"

#include <cstring>

#include "bitstream/CBitWriter.h"
#include "container/ExactCheck.h"

namespace qmx {

ExactStream compressExactly(int width, int height, int sampleBits, int pixelBytes, const void* data,
                            bool verify) {
    ExactStream stream;
    ExactJob job{makeHeader(pixelBytes, sampleBits, width, height), data, 0,
                 std::pmr::new_delete_resource()};
    if (!job.header.isSupported()) return stream;
    job.strideBytes = static_cast<std::size_t>(job.header.rawRowBytes());

    std::vector<unsigned char> bytes;
    const ExactOutcome outcome = encodeExactly(job, [&](auto& encoder) {
        bytes.resize(sizeof(TKHeader) +
                     static_cast<std::size_t>((encoder.getStreamBits() + 7) / 8));
        std::memcpy(bytes.data(), &job.header, sizeof(TKHeader));
        CBitWriter writer(bytes.data() + sizeof(TKHeader), bytes.size() - sizeof(TKHeader));
        encoder.writeStream(writer);
    });
    stream.exactness = Exactness::impossible;
    if (outcome != ExactOutcome::exact) return stream;
    stream.exactness = Exactness::refuted;
    if (verify &&
        !restoresExactly(job, bytes.data() + sizeof(TKHeader), bytes.size() - sizeof(TKHeader)))
        return stream;
    stream.exactness = job.rescues == 0 ? Exactness::plain : Exactness::rescued;
    stream.rescues = job.rescues;
    stream.bytes = std::move(bytes);
    return stream;
}

}  // namespace qmx
