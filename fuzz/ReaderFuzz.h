#pragma once

#include <algorithm>
#include <new>

#include "FuzzInput.h"
#include "FuzzMemory.h"
#include "convert/ImageReading.h"
#include "convert/ImageWriting.h"
#include "convert/Refusal.h"

namespace fuzz {

/// Images are kept small, so that inputs are many.
constexpr std::uint64_t kMostPixels = 1U << 16;

class CMemorySink final : public qmx::IByteSink {
public:
    using IByteSink::write;
    void write(qmx::ByteView bytes) override {
        written.insert(written.end(), bytes.begin(), bytes.end());
    }

    Bytes written;
};

inline qmx::Buffer bufferOf(const std::uint8_t* data, std::size_t size) {
    qmx::Buffer buffer(size);
    std::copy(data, data + size, buffer.bytes.get());
    return buffer;
}

/// Reads any bytes as a file of one format, by `read(buffer, options)`: it ends in an image or a refusal with words,
/// and an image comes back from the format when it is written. The first byte of data decides about alpha.
template <class Read>
void readAndWrite(const std::uint8_t* data, std::size_t size, qmx::FileFormat format,
                  const Read& read) {
    const MemoryLimit limit;
    if (size == 0) return;
    qmx::ReadOptions options;
    options.mostPixels = kMostPixels;
    options.leavesOutOpaqueAlpha = (data[0] & 1) != 0;
    try {
        qmx::ImageFile image = read(bufferOf(data + 1, size - 1), options);
        require(image.pixelsAtByte + image.rawBytes() <= image.buffer.sizeBytes,
                "pixels are in the buffer");
        if (image.geometry.bits_per_pixel == 0) image.geometry.bits_per_pixel = 16;
        const Bytes pixels(image.pixels(), image.pixels() + image.rawBytes());
        CMemorySink sink;
        qmx::writeImage(image, format, sink);
        const qmx::ImageFile again =
            read(bufferOf(sink.written.data(), sink.written.size()), options);
        require(std::equal(pixels.begin(), pixels.end(), again.pixels(),
                           again.pixels() + again.rawBytes()),
                "what is written is read again");
    } catch (const qmx::Refusal& refusal) {
        require(!refusal.words.empty(), "a refusal has words");
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace fuzz
