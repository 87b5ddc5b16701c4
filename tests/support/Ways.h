#pragma once

#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/FileDrivers.h"

// Every way in which a caller uses the codec, from memory to memory.

namespace test {

/// The words `c` and `d`, `C` and `D`, the classes behind `cc` and `dc`, and the functions of tesk.h.
enum class Way { fileLower, fileUpper, object, codec };

inline constexpr Way kAllWays[] = {Way::fileLower, Way::fileUpper, Way::object, Way::codec};

inline const char* nameOf(Way way) {
    constexpr const char* kNames[] = {"file lower", "file upper", "object", "C interface"};
    return kNames[static_cast<int>(way)];
}

inline Outcome compress(Way way, const RawImage& image, const Wish& wish = {}) {
    switch (way) {
        case Way::fileLower:
        case Way::fileUpper:
            return compressFile(image, way == Way::fileUpper, wish);
        case Way::object:
            return compressObject(image, wish.budgetBytes);
        case Way::codec:
            return compressCall(makeCodecWithFlags(wish.flags).get(), image, wish.budgetBytes);
    }
    return {};
}

inline Outcome decompress(Way way, const Bytes& stream, const Wish& wish = {}) {
    switch (way) {
        case Way::fileLower:
        case Way::fileUpper:
            return decompressFile(stream, way == Way::fileUpper, wish.extra);
        case Way::object:
            return decompressObject(stream);
        case Way::codec:
            return decompressCall(makeCodec().get(), stream);
    }
    return {};
}

/// Returns: whether a stream gives image in every way.
inline bool comesBackInEveryWay(const RawImage& image, const Bytes& stream) {
    return std::all_of(std::begin(kAllWays), std::end(kAllWays),
                       [&](Way way) { return decompress(way, stream).bytes == image.bytes; });
}

/// Returns: whether a stream without its last bytes, more than are padding, passes for the whole.
inline bool hasFalseEnd(const Bytes& stream) {
    constexpr std::size_t kMorePaddingThanThereIs = 3;
    const Bytes prefix = prefixOf(stream, stream.size() - kMorePaddingThanThereIs);
    return decompress(Way::codec, prefix).status == TESK_OK;
}

/// Returns: whether a way's own decoder gives image.
inline bool comesBack(Way way, const Bytes& stream, const RawImage& image) {
    const Outcome back = decompress(way, stream);
    if (back.bytes != image.bytes) return false;
    // The C interface promises more of a stream that loses nothing: it is known to be complete.
    return way != Way::codec || (back.status == TESK_OK && !hasFalseEnd(stream));
}

}  // namespace test
