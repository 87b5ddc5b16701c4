// tesk, and the fastest that memory allows.

#include <cstring>
#include <stdexcept>

#include "BenchCodec.h"
#include "IPeer.h"

namespace bench {
namespace {

void require(tesk_status status) {
    if (status != TESK_OK) throw std::runtime_error(tesk_status_message(status));
}

class CTesk : public IPeer {
public:
    explicit CTesk(bool verified)
        : isVerified(verified), codec(makeCodec(verified ? 0 : TESK_UNVERIFIED)) {}
    const char* name() const override { return isVerified ? "tesk" : "tesk, unverified"; }
    std::string version() const override { return tesk_version(); }
    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        tesk_result result = TESK_RESULT_INIT;
        require(tesk_compress(codec.get(), &picture.image, picture.pixels.data(), 0, 0, room.data(),
                              room.size(), &result));
        return result.stream_bytes;
    }
    void decompress(std::span<const unsigned char> stream, const Picture&,
                    std::span<unsigned char> pixels) override {
        require(tesk_decompress(codec.get(), stream.data(), stream.size(), pixels.data(),
                                pixels.size(), 0, nullptr));
    }

private:
    bool isVerified;
    Codec codec;
};

class CMemcpy : public IPeer {
public:
    const char* name() const override { return "memcpy"; }
    std::string version() const override { return ""; }
    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        std::memcpy(room.data(), picture.pixels.data(), picture.pixels.size());
        return picture.pixels.size();
    }
    void decompress(std::span<const unsigned char> stream, const Picture&,
                    std::span<unsigned char> pixels) override {
        std::memcpy(pixels.data(), stream.data(), stream.size());
    }
};

}  // namespace

Peer makeTesk(bool verified) {
    return std::make_unique<CTesk>(verified);
}

Peer makeMemcpy() {
    return std::make_unique<CMemcpy>();
}

}  // namespace bench
