// A script of writes and reads on all bit streams, against a plain vector of bits.

#include <algorithm>
#include <cstring>

#include "FuzzInput.h"
#include "bitstream/CBitChunkWriter.h"
#include "bitstream/CBitFileReader.h"
#include "bitstream/CBitInfiniteReader.h"
#include "bitstream/CBitLazyWriter.h"
#include "bitstream/Status.h"

namespace {

using Bits = std::vector<bool>;

/// Writes one field to writer and model. Returns: false when the writer is full, as the model
/// expects for a room of roomBits.
bool writeField(fuzz::FuzzInput& input, qmx::CBitWriter& writer, Bits& model,
                std::uint64_t roomBits) {
    const bool single = input.flag();
    const int width = single ? 1 : static_cast<int>(input.below(65));
    const std::uint64_t value = input.number(8) & (single ? 1U : ~std::uint64_t{0});
    const bool fits = model.size() + static_cast<unsigned>(width) <= roomBits;
    for (int bit = 0; bit < width && model.size() < roomBits; ++bit)
        model.push_back((value >> bit & 1) != 0);
    try {
        if (single) {
            writer.writeBit(value);
        } else {
            writer.writeInt(value, width);
        }
        fuzz::require(fits, "a full writer throws");
    } catch (int number) {
        fuzz::require(!fits && number == qmx::kThrownEndOfStream, "only a full writer throws");
    }
    fuzz::require(writer.getTotal() == model.size(), "the total counts what fitted");
    return fits;
}

/// Writes fields until the input's script says enough or the writer is full.
Bits writeScript(fuzz::FuzzInput& input, qmx::CBitWriter& writer, std::uint64_t roomBits) {
    Bits model;
    while (!input.isEmpty() && input.below(256) != 0) {
        if (input.below(16) == 0) writer.flush();
        if (!writeField(input, writer, model, roomBits)) break;
    }
    writer.flush();
    return model;
}

void checkBytes(const unsigned char* bytes, const Bits& model) {
    for (std::size_t i = 0; i < model.size(); ++i)
        fuzz::require(((bytes[i / 8] >> (i % 8)) & 1) == static_cast<int>(model[i]),
                      "bits stand where they belong");
}

/// Reads as the script says. atEnd: whether the data end by throwing 3, else zeros follow.
void readScript(fuzz::FuzzInput& input, qmx::CBitReader& reader, const Bits& model, bool atEnd) {
    std::uint64_t place = 0;
    const auto bitAt = [&](std::uint64_t i) { return i < model.size() && model[i]; };
    while (!input.isEmpty() && place < model.size() + 500) {
        const std::uint64_t action = input.below(4);
        const std::uint64_t count = input.below(action == 1 ? 3000 : 64);
        std::uint64_t wanted = action == 3 ? 1 : count;
        try {
            if (action == 0 || action == 3) {
                const std::uint64_t value =
                    action == 3 ? reader.readBit() : reader.readInt(static_cast<int>(count));
                for (std::uint64_t bit = 0; bit < wanted; ++bit)
                    fuzz::require((value >> bit & 1) == (bitAt(place + bit) ? 1U : 0U),
                                  "fields are read as written");
            } else if (action == 1) {
                reader.skip(count);
            } else {
                std::uint64_t zeros = 0;
                while (zeros < count && !bitAt(place + zeros) &&
                       (!atEnd || place + zeros < model.size()))
                    ++zeros;
                wanted = zeros + (zeros < count ? 1 : 0);
                const int counted = reader.countZeros(static_cast<int>(count));
                fuzz::require(static_cast<std::uint64_t>(counted) == zeros, "zeros are counted");
            }
            fuzz::require(!atEnd || place + wanted <= model.size(), "the end throws");
        } catch (int number) {
            fuzz::require(number == qmx::kThrownEndOfStream, "the end throws 3");
            fuzz::require(atEnd && place + wanted > model.size(), "only the end throws");
            return;
        }
        place += wanted;
    }
}

void checkReaders(fuzz::FuzzInput& input, fuzz::Bytes bytes) {
    Bits model;
    for (std::size_t i = 0; i < 8 * bytes.size(); ++i)
        model.push_back(((bytes[i / 8] >> (i % 8)) & 1) != 0);
    qmx::CBitReader memory(bytes.data(), bytes.size());
    if (input.flag()) {
        qmx::CBitInfiniteReader endless;
        endless.create(&memory, 0);
        return readScript(input, endless, model, false);
    }
    if (input.flag() || bytes.empty()) return readScript(input, memory, model, true);
    std::FILE* file = fmemopen(bytes.data(), bytes.size(), "rb");
    fuzz::require(file != nullptr, "bytes open as a file");
    qmx::CBitFileReader fileReader(file, true);
    if (input.flag()) {
        qmx::CBitInfiniteReader endless;
        endless.create(&fileReader, 0);
        return readScript(input, endless, model, false);
    }
    readScript(input, fileReader, model, true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto roomBytes = static_cast<std::size_t>(input.below(200));
    fuzz::Bytes buffer(roomBytes);
    switch (input.below(3)) {
        case 0: {
            qmx::CBitWriter writer(buffer.data(), buffer.size());
            checkBytes(buffer.data(), writeScript(input, writer, 8 * roomBytes));
            break;
        }
        case 1: {
            qmx::CBitLazyWriter writer(roomBytes + 1, true);
            const Bits model = writeScript(input, writer, 8 * (roomBytes + 1));
            if (!model.empty()) checkBytes(writer.getBlock(), model);
            break;
        }
        default: {
            qmx::CBitChunkWriter writer;
            const Bits model = writeScript(input, writer, ~std::uint64_t{0});
            buffer.assign((model.size() + 7) / 8, 0);
            qmx::CBitWriter copy(buffer.data(), buffer.size());
            fuzz::require(writer.writeBitsTo(&copy, 0) == model.size(), "all bits are copied");
            copy.flush();
            checkBytes(buffer.data(), model);
        }
    }
    const auto copies = static_cast<int>(input.below(40));
    fuzz::Bytes bytes;
    for (int i = 0; i <= copies; ++i)
        bytes.insert(bytes.end(), buffer.begin(), buffer.end());
    checkReaders(input, bytes);
    return 0;
}
