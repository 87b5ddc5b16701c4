// Any image, compressed without a budget: it comes back exactly when the call says so, and only then, and
// no part of its stream passes for the whole.
// Every CPU level gives the same stream and the same image.

#include "FuzzImage.h"
#include "FuzzLevels.h"

namespace {

struct Compressed {
    fuzz::Bytes stream;
    tesk_loss loss = TESK_LOSS_NONE;

    bool operator==(const Compressed&) const = default;
};

/// Returns: whether a stream without its last bytes, more than are padding, passes for the whole.
bool hasFalseEnd(const fuzz::Bytes& stream, const qmx::TKHeader& header) {
    constexpr std::ptrdiff_t kMorePaddingThanThereIs = 3;
    if (stream.size() <= sizeof header + kMorePaddingThanThereIs) return false;
    const fuzz::Bytes prefix(stream.begin(), stream.end() - kMorePaddingThanThereIs);
    return fuzz::decodeC(prefix, header).status == qmx::kComplete;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    fuzz::FuzzInput input(data, size);
    const fuzz::Image image = fuzz::takeImage(input);
    const Compressed compressed = fuzz::sameAtEveryCpuLevel([&] {
        Compressed made;
        made.stream = fuzz::compress(image, 0, &made.loss);
        return made;
    });
    if (compressed.stream.empty()) return 0;
    fuzz::require(compressed.loss != TESK_LOSS_BUDGET, "without a budget nothing is cut");

    qmx::TKHeader header;
    std::memcpy(&header, compressed.stream.data(), sizeof header);
    const fuzz::Outcome decoded =
        fuzz::sameAtEveryCpuLevel([&] { return fuzz::decodeC(compressed.stream, header); });
    if (decoded.status == fuzz::kNoMemory || compressed.loss == TESK_LOSS_UNCHECKED) return 0;
    const bool comesBack = decoded.status == qmx::kComplete && decoded.pixels == image.pixels &&
                           !hasFalseEnd(compressed.stream, header);
    fuzz::require(comesBack == (compressed.loss == TESK_LOSS_NONE),
                  "the loss is told, and only a loss");
    return 0;
}
