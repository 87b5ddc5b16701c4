#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qmx {

/// What is not kept of a file, for a sentence: "PNG chunks gAMA, tIME".
struct LostPart {
    std::string words;
    bool isSeveral = true;
    /// A note says so already.
    bool isNoted = false;
};

/// Returns: "1 byte", "2 bytes".
std::string bytesInWords(std::uint64_t count);

/// Returns: that so many bytes behind an image are not kept.
LostPart bytesBehind(std::size_t count);

/// Returns: all parts, for a sentence.
std::string namesOf(const std::vector<LostPart>& parts);

/// Returns: a note that parts are not kept, empty where other notes say so of all of them.
std::string noteOn(const std::vector<LostPart>& parts);

}  // namespace qmx
