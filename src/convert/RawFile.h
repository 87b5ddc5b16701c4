#pragma once

#include <optional>
#include <string>

#include "convert/ImageFile.h"

namespace qmx {

/// What --raw says about a file without a head: WxH:TYPE[+SKIP].
struct RawLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned bytesPerPixel = 0;
    /// 0 where they are to be found.
    unsigned bits = 0;
    /// "gray16be" and "int16" for samples that streams have otherwise, else empty.
    std::string otherType;
    std::uint64_t skipBytes = 0;
};

/// Returns: nothing where text is none.
std::optional<RawLayout> parseRawLayout(const std::string& text);

/// Throws: Refusal where a file of so many bytes does not have the samples of layout.
void requireRawBytes(std::uint64_t fileBytes, const RawLayout& layout, const ReadOptions& options);

/// Reads samples that stand in a file as layout says, which must be just as long. Throws: Refusal.
ImageFile readRaw(Buffer file, const RawLayout& layout, const ReadOptions& options);

/// Turns samples from how they stand in a raw file of that type into those of streams, or back: each turn undoes
/// itself. Types without a turn are left alone. Requires: 16-bit gray where there is one.
void turnRawSamples(ImageFile& image, const std::string& type);

/// The types that need a turn.
inline constexpr char kBigEndianRaw[] = "gray16be";
inline constexpr char kSignedRaw[] = "int16";

}  // namespace qmx
