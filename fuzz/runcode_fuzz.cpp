// Any bits as run codes, against the plainest decoder that the format page allows; and any runs,
// encoded and decoded, at every CPU level.

#include "FuzzLevels.h"
#include "bitstream/CBitDecoder.h"
#include "bitstream/CBitEncoder.h"
#include "bitstream/CBitInfiniteReader.h"

namespace {

/// docs/format.md, 11 Run code, a bit at a time.
class PlainDecoder {
public:
    explicit PlainDecoder(const fuzz::Bytes& data) : bytes(data) {}

    std::uint64_t readBit() {
        const std::uint64_t place = position++;
        return place / 8 < bytes.size() ? (unsigned{bytes[place / 8]} >> (place % 8)) & 1U : 0;
    }

    std::uint64_t readRun() {
        int zeros = 0;
        while (zeros < 41 && readBit() == 0)
            ++zeros;
        if (zeros == 0) return 0;
        if (zeros == 41) return (std::uint64_t{1} << 30) + 1;
        if (zeros == 40) {
            if (ended) return 41;
            ended = true;
            return readRun();
        }
        std::uint64_t value = 0;
        for (int bit = 0; bit < zeros - 1; ++bit)
            value |= readBit() << bit;
        return (std::uint64_t{1} << (zeros - 1)) + value;
    }

private:
    const fuzz::Bytes& bytes;
    std::uint64_t position = 0;
    bool ended = false;
};

/// Returns: the sum of the runs.
std::uint64_t checkDecoder(const fuzz::Bytes& bits) {
    PlainDecoder plain(bits);
    qmx::CBitReader source(bits.data(), bits.size());
    qmx::CBitInfiniteReader reader;
    reader.create(&source, 0);
    qmx::CBitDecoder decoder;
    decoder.attach(&reader);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < 8 * bits.size() + 3; ++i) {
        const std::uint64_t run = decoder.getRun();
        fuzz::require(run == plain.readRun(), "runs decode as the page says");
        fuzz::require(decoder.readRawBit() == plain.readBit(), "signs follow their runs");
        decoder.readRun();
        sum += run;
    }
    return sum;
}

/// Returns: the bits of the runs.
fuzz::Bytes checkEncoder(const std::vector<std::uint64_t>& runs) {
    qmx::CBitChunkEncoder encoder;
    for (const std::uint64_t run : runs)
        encoder.encodeOne(run);
    encoder.terminate();
    fuzz::Bytes bits((encoder.getStoredTotal() + 7) / 8);
    qmx::CBitWriter writer(bits.data(), bits.size());
    encoder.writer().writeBitsTo(&writer, 0);
    writer.flush();
    PlainDecoder plain(bits);
    for (const std::uint64_t run : runs)
        fuzz::require(plain.readRun() == run, "runs come back");
    return bits;
}

std::vector<std::uint64_t> takeRuns(fuzz::FuzzInput& input) {
    std::vector<std::uint64_t> runs;
    while (!input.isEmpty() && runs.size() < 5000) {
        const int bytes = static_cast<int>(input.below(5));
        runs.push_back(input.number(bytes) & 0x7FFFFFFFU);
    }
    return runs;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    if (input.flag()) {
        const std::vector<std::uint64_t> runs = takeRuns(input);
        fuzz::sameAtEveryCpuLevel([&] { return checkEncoder(runs); });
    } else {
        const fuzz::Bytes bits = input.rest();
        fuzz::sameAtEveryCpuLevel([&] { return checkDecoder(bits); });
    }
    return 0;
}
