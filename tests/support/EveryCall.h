#pragma once

#include <functional>

#include "support/CodecCalls.h"
#include "support/CodecObjects.h"

// Calls of the C interface of every kind, for tests of what they take.

namespace test {

/// A call that is repeated with a codec and takes nothing but what the codec takes.
struct NamedCall {
    std::string name;
    std::function<tesk_status(tesk_codec* codec)> make;
    tesk_status expected;
};

/// The calls with one image and its streams. Requires: outlives the calls.
class EveryCall {
public:
    EveryCall(const RawImage& rawImage, const std::string& imageName)
        : image(rawImage), geometry(geometryOf(image)), pixels(image.bytes.size()) {
        const Codec codec = makeCodec();
        stream = compressCall(codec.get(), image).bytes;
        damaged = stream;
        // The first section, behind the byte of the top plane, names plane 1 and order 7.
        constexpr unsigned char kForeignSection = 0x1D;
        damaged[sizeof(qmx::TKHeader) + 1] = kForeignSection;
        room.resize(stream.size() + 1000);
        addCompression(imageName + ", compressed", 0, room.size(), TESK_OK);
        addCompression(imageName + ", compressed, ample budget", kAmpleBudget, room.size(),
                       TESK_OK);
        addCompression(imageName + ", compressed, cut", 20, room.size(), TESK_CUT);
        addCompression(imageName + ", no room", 0, 10, TESK_BUFFER_TOO_SMALL);
        addDecompression(imageName + ", complete", stream, stream.size(), TESK_OK);
        addDecompression(imageName + ", damaged", damaged, damaged.size(), TESK_INVALID_STREAM);
        for (const std::size_t size : {std::size_t{16}, stream.size() / 2})
            addDecompression(imageName + ", cut to " + std::to_string(size), stream, size,
                             TESK_CUT);
        const int levels = std::max(qmx::levelCount(image.width, image.height), 0);
        for (int k = 0; k <= levels; k += std::max(levels - 1, 1))
            addReduction(imageName + ", reduced by " + std::to_string(k),
                         static_cast<std::uint32_t>(k), TESK_OK);
        addReduction(imageName + ", reduced too far", static_cast<std::uint32_t>(levels) + 1,
                     TESK_UNSUPPORTED_FORMAT);
    }
    EveryCall(const EveryCall&) = delete;
    EveryCall& operator=(const EveryCall&) = delete;

    std::vector<NamedCall> calls;

private:
    void addCompression(const std::string& name, std::size_t budgetBytes, std::size_t roomBytes,
                        tesk_status expected) {
        calls.push_back({name,
                         [this, budgetBytes, roomBytes](tesk_codec* codec) {
                             return tesk_compress(codec, &geometry, image.bytes.data(), 0,
                                                  budgetBytes, room.data(), roomBytes, nullptr);
                         },
                         expected});
    }
    void addDecompression(const std::string& name, const Bytes& bytes, std::size_t sizeBytes,
                          tesk_status expected) {
        calls.push_back({name,
                         [this, &bytes, sizeBytes](tesk_codec* codec) {
                             return tesk_decompress(codec, bytes.data(), sizeBytes, pixels.data(),
                                                    pixels.size(), 0, nullptr);
                         },
                         expected});
    }
    void addReduction(const std::string& name, std::uint32_t levels, tesk_status expected) {
        calls.push_back({name,
                         [this, levels](tesk_codec* codec) {
                             return tesk_decompress_reduced(codec, stream.data(), stream.size(),
                                                            levels, pixels.data(), pixels.size(), 0,
                                                            nullptr);
                         },
                         expected});
    }

    RawImage image;
    tesk_image geometry;
    Bytes stream;
    Bytes damaged;
    Bytes room;
    Bytes pixels;
};

/// Images of all sample types, small and large, plain and rescued, with all their calls.
inline std::vector<std::unique_ptr<EveryCall>> callsOfAllKinds() {
    struct Kind {
        const char* name;
        int bytesPerPixel;
        int bitsPerPixel;
    };
    constexpr Kind kKinds[] = {{"8-bit gray", 1, 8},
                               {"RGB", 3, 8},
                               {"11-bit gray", 2, 11},
                               {"12-bit gray", 2, 12},
                               {"16-bit gray", 2, 16}};
    struct Shape {
        Content content;
        int width;
        int height;
    };
    // The flat ones are rescued, and the thin one is filtered.
    constexpr Shape kShapes[] = {{Content::photo, 40, 30},
                                 {Content::photo, 256, 257},
                                 {Content::flat, 5, 5},
                                 {Content::flat, 362, 360},
                                 {Content::noise, 3, 20}};
    std::vector<std::unique_ptr<EveryCall>> all;
    for (const Kind& kind : kKinds)
        for (const Shape& shape : kShapes)
            all.push_back(std::make_unique<EveryCall>(
                makeImage(shape.content, kind.bytesPerPixel, kind.bitsPerPixel, shape.width,
                          shape.height),
                std::string(kind.name) + ", " + nameOf(shape.content) + " " +
                    std::to_string(shape.width) + " x " + std::to_string(shape.height)));
    return all;
}

}  // namespace test
