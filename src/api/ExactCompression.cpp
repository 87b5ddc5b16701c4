#include "api/ExactCompression.h"

#include "api/CCompression.h"

namespace qmx {
namespace {

class CVectorPlace final : public IStreamPlace {
public:
    explicit CVectorPlace(std::vector<unsigned char>& vectorBytes) : bytes(vectorBytes) {}
    unsigned char* take(std::size_t sizeBytes, std::pmr::memory_resource&) override {
        bytes.resize(sizeBytes);
        return bytes.data();
    }

private:
    std::vector<unsigned char>& bytes;
};

}  // namespace

ExactStream compressExactly(int width, int height, int sampleBits, int pixelBytes, const void* data,
                            bool verify) {
    ExactStream stream;
    const TKHeader header = makeHeader(pixelBytes, sampleBits, width, height);
    if (!header.isSupported()) return stream;
    sizeOfBytes(header.rawBytes());  // no memory holds what does not fit a size
    CPixelsInMemory pixels(data, header.rawRowBytes());
    ImageJob job{header, pixels};
    CVectorPlace place(stream.bytes);
    const std::uint32_t flags = verify ? 0 : TESK_UNVERIFIED;
    CompressRequest request{flags, 0, place};
    if (compressWhole(job, request) == TESK_OK) {
        stream.exactness = request.rescue == 0 ? Exactness::plain : Exactness::rescued;
        stream.rescues = request.rescue;
        return stream;
    }
    stream.bytes.clear();
    stream.exactness =
        request.loss == TESK_LOSS_UNKNOWN ? Exactness::refuted : Exactness::impossible;
    return stream;
}

}  // namespace qmx
