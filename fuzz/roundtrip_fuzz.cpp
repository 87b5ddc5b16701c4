// Any image, compressed without a budget: it comes back exactly when the call says so, and only then.

#include "FuzzImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    fuzz::FuzzInput input(data, size);
    const fuzz::Image image = fuzz::takeImage(input);
    tesk_loss loss = TESK_LOSS_NONE;
    const fuzz::Bytes stream = fuzz::compress(image, 0, &loss);
    if (stream.empty()) return 0;
    fuzz::require(loss != TESK_LOSS_BUDGET, "without a budget nothing is cut");

    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    const fuzz::Outcome decoded = fuzz::decodeC(stream, header);
    if (decoded.status == fuzz::kNoMemory || loss == TESK_LOSS_UNCHECKED) return 0;
    const bool comesBack = qmx::isUsable(decoded.status) && decoded.pixels == image.pixels;
    fuzz::require(comesBack == (loss == TESK_LOSS_NONE), "the loss is told, and only a loss");
    return 0;
}
