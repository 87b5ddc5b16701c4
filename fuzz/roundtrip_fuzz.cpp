// Any image, compressed without a budget: it comes back exactly when the call says so, and only then.
// Every CPU level gives the same stream and the same image.

#include "FuzzImage.h"
#include "FuzzLevels.h"

namespace {

struct Compressed {
    fuzz::Bytes stream;
    tesk_loss loss = TESK_LOSS_NONE;

    bool operator==(const Compressed&) const = default;
};

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
    const bool comesBack = qmx::isUsable(decoded.status) && decoded.pixels == image.pixels;
    fuzz::require(comesBack == (compressed.loss == TESK_LOSS_NONE),
                  "the loss is told, and only a loss");
    return 0;
}
