#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

// What all fuzz targets share: numbers out of the input, and the end when something does not hold.

namespace fuzz {

using Bytes = std::vector<unsigned char>;

/// Ends the process, which is a finding, when claim does not hold.
inline void require(bool claim, const char* text) {
    if (claim) return;
    std::fprintf(stderr, "does not hold: %s\n", text);
    std::abort();
}

/// Takes numbers from the front of the input; zeros behind its end.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t sizeBytes) : next(data), left(sizeBytes) {}

    /// Returns: a number of count bytes, at most 8.
    std::uint64_t number(int count) {
        std::uint64_t value = 0;
        for (int i = 0; i < count; ++i)
            value |= std::uint64_t{byte()} << (8 * i);
        return value;
    }
    /// Returns: a number below bound. Requires: 0 < bound <= 2^32.
    std::uint64_t below(std::uint64_t bound) { return number(bound <= 256 ? 1 : 4) % bound; }
    bool flag() { return (byte() & 1) != 0; }
    bool isEmpty() const { return left == 0; }
    /// Returns: the bytes that are left; the input is empty afterwards.
    Bytes rest() {
        Bytes bytes(next, next + left);
        left = 0;
        return bytes;
    }

private:
    std::uint8_t byte() {
        if (left == 0) return 0;
        --left;
        return *next++;
    }

    const std::uint8_t* next;
    std::size_t left;
};

}  // namespace fuzz
