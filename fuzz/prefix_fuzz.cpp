// Any image, cut anywhere: a budgeted stream is the complete one cut at that byte, and a prefix of a
// stream that decodes never does worse than end early, in every way of decoding, at every CPU level.

#include <algorithm>

#include "FuzzImage.h"
#include "FuzzLevels.h"

namespace {

/// Compresses with a budget and decodes the whole and the part. Returns: the outcome of the part.
fuzz::Outcome checkPrefix(const fuzz::Image& image, const fuzz::Bytes& complete,
                          std::size_t cutBytes) {
    const fuzz::Bytes prefix(complete.begin(),
                             complete.begin() + static_cast<std::ptrdiff_t>(cutBytes));
    fuzz::require(fuzz::compress(image, cutBytes) == prefix, "a budget cuts the complete stream");

    qmx::TKHeader header;
    std::memcpy(&header, complete.data(), sizeof header);
    const fuzz::Outcome whole = fuzz::decodeC(complete, header);
    fuzz::Outcome part = fuzz::decodeC(prefix, header);
    if (whole.status == qmx::kComplete)
        fuzz::require(qmx::isUsable(part.status), "a prefix decodes where its stream does");
    if (prefix.size() > sizeof header)
        fuzz::require(fuzz::decodeObject(prefix) == part, "the object decodes a prefix alike");
    return part;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    fuzz::FuzzInput input(data, size);
    const std::uint64_t place = input.number(3);
    const fuzz::Image image = fuzz::takeImage(input);
    const fuzz::Bytes complete =
        fuzz::sameAtEveryCpuLevel([&] { return fuzz::compress(image, 0); });
    if (complete.empty()) return 0;
    const std::size_t cutBytes =
        sizeof(qmx::TKHeader) + place % (complete.size() - sizeof(qmx::TKHeader) + 1);
    fuzz::sameAtEveryCpuLevel([&] { return checkPrefix(image, complete, cutBytes); });
    return 0;
}
