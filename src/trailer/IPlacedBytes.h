#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qmx {

/// Bytes that can be read at any place: a file, or memory.
class IPlacedBytes {
public:
    virtual std::uint64_t sizeBytes() const = 0;
    /// Fills `to` with the bytes from `offset` on. Requires: they end at sizeBytes() or before.
    /// Throws: what the source throws when it cannot be read.
    virtual void read(std::uint64_t offset, std::span<unsigned char> to) const = 0;

protected:
    ~IPlacedBytes() = default;
};

/// Bytes of somebody else's memory, which outlives this.
class CMemoryBytes final : public IPlacedBytes {
public:
    explicit CMemoryBytes(std::span<const unsigned char> memory) : bytes(memory) {}

    std::uint64_t sizeBytes() const override { return bytes.size(); }
    void read(std::uint64_t offset, std::span<unsigned char> to) const override {
        std::ranges::copy(bytes.subspan(static_cast<std::size_t>(offset), to.size()), to.begin());
    }

private:
    std::span<const unsigned char> bytes;
};

}  // namespace qmx
