#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference {

/// A growing sequence of bits in stream order (docs/format.md, 4).
class BitString {
public:
    BitString() = default;

    /// All bits of a stream, the bytes from `first` on.
    BitString(const std::vector<unsigned char>& bytes, std::size_t first) {
        for (std::size_t i = first; i < bytes.size(); ++i)
            append(bytes[i], 8);
    }

    void append(bool bit) { bits_.push_back(bit); }

    /// A field of `count` bits, its bit 0 first. Bits of `value` above the field are dropped.
    void append(std::uint64_t value, std::int64_t count) {
        for (std::int64_t i = 0; i < count; ++i)
            append(((value >> i) & 1) != 0);
    }

    void append(const BitString& other) {
        for (const bool bit : other.bits_)
            append(bit);
    }

    std::size_t size() const { return bits_.size(); }
    bool at(std::size_t index) const { return bits_[index]; }

    /// The unused high bits of the last byte are 0.
    std::vector<unsigned char> toBytes() const {
        std::vector<unsigned char> bytes((size() + 7) / 8, 0);
        for (std::size_t k = 0; k < size(); ++k) {
            const unsigned value = at(k) ? 1U << (k % 8) : 0U;
            bytes[k / 8] = static_cast<unsigned char>(bytes[k / 8] | value);
        }
        return bytes;
    }

private:
    std::vector<bool> bits_;
};

/// Reads the bits of a string from any position. The string must outlive the reader. Behind the
/// last bit there are zeros for ever; `ended` tells that at least one of them was read.
class BitReader {
public:
    BitReader(const BitString& bits, std::size_t position) : bits_(&bits), position_(position) {}

    std::size_t position() const { return position_; }
    bool ended() const { return ended_; }

    bool bit() {
        if (position_ >= bits_->size()) {
            ended_ = true;
            return false;
        }
        return bits_->at(position_++);
    }

    /// A field of at most 63 bits, its bit 0 first.
    std::int64_t field(std::int64_t count) {
        std::uint64_t value = 0;
        for (std::int64_t i = 0; i < count; ++i)
            value |= std::uint64_t{bit()} << i;
        return static_cast<std::int64_t>(value);
    }

    /// Moves behind the next `count` bits. Skipping bits that are not there counts as reading them.
    void skip(std::int64_t count) {
        const std::size_t left = bits_->size() - position_;
        const std::size_t wanted = static_cast<std::size_t>(count);
        if (wanted > left) ended_ = true;
        position_ += wanted > left ? left : wanted;
    }

private:
    const BitString* bits_;
    std::size_t position_;
    bool ended_ = false;
};

}  // namespace reference
