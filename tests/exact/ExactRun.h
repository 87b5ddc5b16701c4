#pragma once

#include <map>

#include "exact/ExactImages.h"
#include "support/EveryDecoder.h"

namespace test {

/// Compresses images exactly and decodes them in every way; counts and prints what became of them.
class ExactRun {
public:
    ExactRun() = default;
    ExactRun(const ExactRun&) = delete;
    ExactRun& operator=(const ExactRun&) = delete;
    ~ExactRun() {
        std::printf("restored %zu of %zu, plain %zu; by rescue:", restored, images,
                    byRescue.count(0) != 0 ? byRescue.at(0) : 0);
        for (const auto& [rescue, count] : byRescue)
            if (rescue != 0) std::printf(" %u: %zu", rescue, count);
        std::printf("\n");
    }

    /// Compresses image and notes what is wrong: a way in which it does not come back, a stream that
    /// differs from the plain one without need.
    void add(const RawImage& image) {
        ++images;
        const Call exact = compressCall(codec.get(), image);
        if (exact.status != TESK_OK) return note(image, tesk_loss_message(exact.result.loss));
        if (!comesBackInEveryWay(image, exact.bytes)) return note(image, "does not come back");
        ++restored;
        ++byRescue[exact.result.rescue];
        const Call plain = compressCall(plainCodec.get(), image);
        const bool isPlain = exact.result.rescue == 0;
        if (isPlain != (plain.bytes == exact.bytes)) note(image, "rescue is not what differs");
        const bool isNeeded =
            plain.result.loss != TESK_LOSS_NONE || !comesBackInEveryWay(image, plain.bytes);
        if (!isPlain && !isNeeded) note(image, "rescued without need");
    }

    /// The first things that were wrong.
    std::string wrong;
    std::size_t images = 0;
    std::size_t restored = 0;
    /// Images that each combination of rescues was needed for.
    std::map<std::uint32_t, std::size_t> byRescue;

private:
    void note(const RawImage& image, const char* what) {
        constexpr std::size_t kEnough = 1000;
        if (wrong.size() < kEnough) wrong += describe(image) + ": " + what + "\n";
    }

    Codec codec = makeCodecWithFlags(TESK_UNVERIFIED);
    Codec plainCodec = makeCodecWithFlags(TESK_PLAIN);
};

}  // namespace test
