#pragma once

#include <string>
#include <vector>

#include "coding/syntax/SectionSyntax.h"
#include "support/Bytes.h"

namespace test {

/// Writes coefficient streams section by section, well-formed or not.
class StreamBuilder {
public:
    StreamBuilder(int width, int height, int topPlane)
        : countBits(qmx::sampleCountBits(width, height)) {
        put(static_cast<std::uint64_t>(topPlane), 8);
    }

    /// Payload bits in stream order as characters 0 and 1; others separate for the eye.
    StreamBuilder& section(int plane, int order, bool refinement, const std::string& payload) {
        std::vector<bool> payloadBits;
        for (const char bit : payload)
            if (bit == '0' || bit == '1') payloadBits.push_back(bit == '1');
        header(plane, order, refinement, payloadBits.size());
        bits.insert(bits.end(), payloadBits.begin(), payloadBits.end());
        return *this;
    }
    StreamBuilder& n(int order, const std::string& payload) {
        return section(0, order, false, payload);
    }
    StreamBuilder& u(int order, const std::string& payload) {
        return section(0, order, true, payload);
    }
    /// A header alone, with any length.
    StreamBuilder& header(int plane, int order, bool refinement, std::uint64_t lengthBits) {
        put(static_cast<std::uint64_t>(plane), 2);
        put(static_cast<std::uint64_t>(order), 3);
        put(refinement ? 1 : 0, 1);
        put(lengthBits, qmx::lengthFieldBits(countBits, order));
        return *this;
    }

    /// Returns: the stream so far.
    Bytes cut() const {
        Bytes bytes((bits.size() + 7) / 8);
        for (std::size_t i = 0; i < bits.size(); ++i)
            bytes[i / 8] |= static_cast<unsigned char>((bits[i] ? 1 : 0) << (i % 8));
        return bytes;
    }
    /// Returns: the stream with its end mark.
    Bytes end() const {
        StreamBuilder ended = *this;
        ended.put(3, 2 + 9);
        return ended.cut();
    }

private:
    void put(std::uint64_t value, int width) {
        for (int i = 0; i < width; ++i)
            bits.push_back((value >> i & 1) != 0);
    }

    int countBits;
    std::vector<bool> bits;
};

}  // namespace test
