#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bitstream/CAligned.h"

namespace qmx {

/// Root of all bit streams and bit coders: what kind of stream it is and how far it has come.
/// Format: docs/format.md, 4 Bit order.
class CBitStreamer : public CAligned<8> {
public:
    /// Room for a name with the zero that ends it. Implementation limit.
    static constexpr std::size_t kNameBytes = 48;

    CBitStreamer() { name[0] = 0; }
    CBitStreamer(const CBitStreamer&) = delete;
    CBitStreamer& operator=(const CBitStreamer&) = delete;
    virtual ~CBitStreamer() = default;

    /// Where the bits live: "buffer", "lazy", "file" or "dynamic".
    virtual const char* getType() const = 0;
    /// 'w' for writers and bit coders, 'r' for readers.
    virtual char getMode() const = 0;
    /// "raw" for uncoded bits, "rleish" for run codes.
    virtual const char* getCode() const = 0;
    /// Symbols written or consumed so far; for uncoded streams a symbol is a bit.
    virtual std::uint64_t getTotal() const = 0;
    /// Bits that stand in the underlying stream.
    virtual std::uint64_t getStoredTotal() const = 0;

    /// A label for people who debug; empty unless setName was called.
    const char* getName() const { return name; }
    /// Copies text, as far as there is room for it.
    void setName(const char* text) {
        const std::size_t length = std::min(std::strlen(text), kNameBytes - 1);
        std::memmove(name, text, length);
        name[length] = 0;
    }

private:
    char name[kNameBytes];
};

/// A stream of uncoded bits.
class CBitRawStreamer : public CBitStreamer {
public:
    const char* getCode() const override { return "raw"; }
    std::uint64_t getStoredTotal() const override { return getTotal(); }
};

}  // namespace qmx
