#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "bitstream/CAligned.h"

namespace qmx {

/// Root of all bit streams and bit coders: what kind of stream it is and how far it has come.
/// Format: docs/format.md, 4 Bit order.
class CBitStreamer : public CAligned<8> {
public:
    CBitStreamer() = default;
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
    const char* getName() const { return name == nullptr ? "" : name.get(); }
    /// Copies text. Throws: std::bad_alloc.
    void setName(const char* text) {
        const std::size_t bytes = std::strlen(text) + 1;
        auto copy = std::make_unique_for_overwrite<char[]>(bytes);
        std::memcpy(copy.get(), text, bytes);
        name = std::move(copy);
    }

private:
    /// Null without a name: there are hundreds of streams in a call, and none has one.
    std::unique_ptr<char[]> name;
};

/// A stream of uncoded bits.
class CBitRawStreamer : public CBitStreamer {
public:
    const char* getCode() const override { return "raw"; }
    std::uint64_t getStoredTotal() const override { return getTotal(); }
};

}  // namespace qmx
