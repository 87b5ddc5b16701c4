#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace qmx {

/// Makes a trailer: collects boxes, then puts the checksum of the stream and of them in front.
class CTrailerWriter {
public:
    /// Appends a box. Requires: name has four bytes and is that of no other box, nor of the checksum;
    /// fewer than kMostBoxes - 1 boxes so far. Throws: std::length_error when the trailer would be
    /// longer than its own length can say; std::bad_alloc. Both leave the boxes as they were.
    void add(std::string_view name, std::span<const unsigned char> bytes);

    /// Returns: what goes behind this complete stream. Throws: std::bad_alloc.
    std::vector<unsigned char> finish(std::span<const unsigned char> stream) const;

private:
    std::vector<unsigned char> boxes;
};

}  // namespace qmx
