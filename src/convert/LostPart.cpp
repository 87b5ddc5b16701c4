#include "convert/LostPart.h"

#include <algorithm>
#include <iterator>

namespace qmx {

std::string bytesInWords(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

LostPart bytesBehind(std::size_t count) {
    return {bytesInWords(count) + " behind the image", count > 1};
}

std::string namesOf(const std::vector<LostPart>& parts) {
    std::string words;
    for (const LostPart& part : parts)
        words += (words.empty() ? "" : ", ") + part.words;
    return words;
}

std::string noteOn(const std::vector<LostPart>& parts) {
    std::vector<LostPart> unsaid;
    std::copy_if(parts.begin(), parts.end(), std::back_inserter(unsaid),
                 [](const LostPart& part) { return !part.isNoted; });
    if (unsaid.empty()) return "";
    const bool areSeveral = unsaid.size() > 1 || unsaid[0].isSeveral;
    return namesOf(unsaid) + (areSeveral ? " are not kept" : " is not kept");
}

}  // namespace qmx
