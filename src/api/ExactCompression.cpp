#include "api/ExactCompression.h"

#include <cstring>

#include "bitstream/CBitWriter.h"
#include "container/CExactEncoder.h"

namespace qmx {

ExactStream compressExactly(int width, int height, int sampleBits, int pixelBytes, const void* data,
                            bool verify) {
    ExactStream stream;
    const TKHeader header = makeHeader(pixelBytes, sampleBits, width, height);
    if (!header.isSupported()) return stream;
    CPixelsInMemory pixels(data, header.rawRowBytes());
    ImageJob job{header, pixels};
    std::vector<unsigned char> bytes;
    Rescues rescues = 0;
    const std::optional<Loss> loss = encodeExactly(job, rescues, [&](auto& sections) {
        bytes.resize(sizeof job.header + sections.facts().streamBytes());
        std::memcpy(bytes.data(), &job.header, sizeof job.header);
        CBitWriter writer(bytes.data() + sizeof job.header, bytes.size() - sizeof job.header);
        sections.writeStream(writer);
    });
    stream.exactness = Exactness::impossible;
    if (loss != Loss::none) return stream;
    stream.exactness = Exactness::refuted;
    const WrittenStream written{bytes.data() + sizeof job.header, bytes.size() - sizeof job.header};
    if (verify && !restoresExactly(job, written)) return stream;
    stream.exactness = rescues == 0 ? Exactness::plain : Exactness::rescued;
    stream.rescues = rescues;
    stream.bytes = std::move(bytes);
    return stream;
}

}  // namespace qmx
