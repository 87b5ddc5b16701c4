#pragma once

#include <cstring>
#include <memory>
#include <new>
#include <tesk/tesk.h>

#include "FuzzInput.h"
#include "FuzzMemory.h"
#include "api/CTeskDecompressor.h"
#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "container/CPixelSink.h"
#include "container/CoefficientDispatch.h"
#include "container/ImageJob.h"

// All ways in which a stream is decoded, each with the same answer.

namespace fuzz {

/// Stands for a refusal of memory where a result would stand.
inline constexpr int kNoMemory = -2;

struct Outcome {
    int status;
    /// Empty unless the status is usable.
    Bytes pixels;

    bool operator==(const Outcome&) const = default;
};

/// Returns: work's outcome, or kNoMemory.
template <class Work>
Outcome withinMemory(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return {kNoMemory, {}};
    }
}

template <class T>
Outcome decodeAs(const qmx::TKHeader& header, qmx::CBitReader& reader) {
    // The other ways need a buffer before they look at the stream, which may be refused.
    Bytes pixels(header.rawBytes());
    qmx::CReceivedSections<T> sections(qmx::shapeOf(header), std::pmr::new_delete_resource());
    const int status = sections.read(reader);
    if (!qmx::isUsable(status)) return {status, {}};
    qmx::CPixelSink<T> sink(header, qmx::limitOf<T>(status, header), pixels.data(),
                            header.rawRowBytes());
    require(qmx::decodeRows(sections, sink), "all rows are decoded");
    return {status, std::move(pixels)};
}

/// Decodes what reader holds through the classes. Requires: the header has a layout.
inline Outcome decode(const qmx::TKHeader& header, qmx::CBitReader& reader,
                      qmx::MostBitsOfShort mostBits) {
    return withinMemory([&] {
        return qmx::dispatchCoefficients(
            header, mostBits, [&]<class T>() { return decodeAs<T>(header, reader); },
            [] {
                return Outcome{qmx::kInvalidSection, {}};
            });
    });
}

/// Decodes a stream with its header through the in-memory object.
inline Outcome decodeObject(const Bytes& stream) {
    return withinMemory([&]() -> Outcome {
        qmx::CTeskDecompressor decompressor(stream.data(), stream.size());
        Bytes pixels(static_cast<std::size_t>(decompressor.getXSize()) *
                     static_cast<std::size_t>(decompressor.getYSize()) *
                     static_cast<std::size_t>(decompressor.getBytesPerPixel()));
        const int status = decompressor.decompress(pixels.data(), pixels.size());
        if (!qmx::isUsable(status)) return {status, {}};
        return {status, std::move(pixels)};
    });
}

struct CodecDestroyer {
    void operator()(tesk_codec* codec) const { tesk_destroy(codec); }
};
using Codec = std::unique_ptr<tesk_codec, CodecDestroyer>;

/// Returns: a codec whose memory is limited like that of the rest.
inline Codec makeCodec(std::uint32_t flags = 0) {
    tesk_options options = TESK_OPTIONS_INIT;
    options.flags = flags;
    options.allocate = [](void*, std::size_t sizeBytes) { return limitedMalloc(sizeBytes); };
    options.release = [](void*, void* memory) { std::free(memory); };
    tesk_codec* codec = nullptr;
    require(tesk_create(&options, &codec) == TESK_OK, "a codec can be made");
    return Codec(codec);
}

/// Returns: what the C interface answers to a decompression into pixels, in the numbers of the others.
inline Outcome outcomeOf(tesk_status status, Bytes pixels) {
    switch (status) {
        case TESK_OK:
            return {qmx::kComplete, std::move(pixels)};
        case TESK_CUT:
            return {qmx::kCut, std::move(pixels)};
        case TESK_OUT_OF_MEMORY:
            return {kNoMemory, {}};
        case TESK_INVALID_STREAM:
        case TESK_UNSUPPORTED_FORMAT:
            return {qmx::kInvalidSection, {}};
        default:
            require(false, "no other status can occur");
            return {};
    }
}

/// Decodes a stream through the C interface.
inline Outcome decodeC(const Bytes& stream, const qmx::TKHeader& header) {
    return withinMemory([&] {
        Bytes pixels(header.rawBytes());
        const Codec codec = makeCodec();
        const tesk_status status = tesk_decompress(codec.get(), stream.data(), stream.size(),
                                                   pixels.data(), pixels.size(), 0, nullptr);
        return outcomeOf(status, std::move(pixels));
    });
}

/// Decodes a stream to 1 : 2^levels. Requires: the image has so many levels.
inline Outcome reduceC(const Bytes& stream, std::uint32_t levels) {
    return withinMemory([&] {
        tesk_image picture = TESK_IMAGE_INIT;
        tesk_probe(stream.data(), stream.size(), &picture);
        require(tesk_reduced_image(&picture, levels, &picture) == TESK_OK, "there are such levels");
        Bytes pixels(std::size_t{picture.width} * picture.height * picture.bytes_per_pixel);
        const Codec codec = makeCodec();
        const tesk_status status =
            tesk_decompress_reduced(codec.get(), stream.data(), stream.size(), levels,
                                    pixels.data(), pixels.size(), 0, nullptr);
        return outcomeOf(status, std::move(pixels));
    });
}

/// Returns: whether the profiles for files and for memory decode a format alike.
inline bool profilesAgree(const qmx::TKHeader& header) {
    return header.bytesPerPixel != 2 || header.bitsPerPixel != 12;
}

}  // namespace fuzz
