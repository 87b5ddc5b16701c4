#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/TempDir.h"
#include "support/TestImages.h"
#include "support/ThrownBy.h"

namespace test {

using Bits = std::vector<bool>;

/// A value and the number of its low bits that go into a stream.
struct Field {
    std::uint64_t value;
    int width;
};

inline std::uint64_t anyWord(Random& random) {
    return random.next() << 40 ^ random.next() << 20 ^ random.next();
}

/// Returns: fields of leastWidth..greatestWidth bits that hold totalBits bits together; the last
/// one is as short as it has to be. Their values have bits above their widths as well.
inline std::vector<Field> randomFields(std::uint64_t totalBits, std::uint64_t seed, int leastWidth,
                                       int greatestWidth) {
    Random random(seed);
    std::vector<Field> fields;
    const auto widths = static_cast<std::uint64_t>(greatestWidth - leastWidth + 1);
    while (totalBits != 0) {
        const std::uint64_t width = static_cast<std::uint64_t>(leastWidth) + random.below(widths);
        fields.push_back({anyWord(random), static_cast<int>(std::min(width, totalBits))});
        totalBits -= std::min(width, totalBits);
    }
    return fields;
}

inline void append(Bits& bits, Field field) {
    for (int i = 0; i < field.width; ++i)
        bits.push_back((field.value >> i & 1) != 0);
}

inline Bits bitsOf(const std::vector<Field>& fields) {
    Bits bits;
    for (const Field& field : fields)
        append(bits, field);
    return bits;
}

inline Bits randomBits(std::uint64_t totalBits, std::uint64_t seed) {
    return bitsOf(randomFields(totalBits, seed, 64, 64));
}

/// Returns: the bytes that hold the bits, the first bit lowest, cut or filled up with `filler` to
/// sizeBytes. A byte that holds any bit has zeros above its last one.
inline Bytes packed(const Bits& bits, std::size_t sizeBytes, unsigned char filler = 0) {
    Bytes bytes(sizeBytes, filler);
    for (std::size_t i = 0; i < bits.size() && i / 8 < sizeBytes; ++i) {
        if (i % 8 == 0) bytes[i / 8] = 0;
        if (bits[i]) bytes[i / 8] = static_cast<unsigned char>(bytes[i / 8] | 1U << i % 8);
    }
    return bytes;
}

inline Bytes packed(const Bits& bits) {
    return packed(bits, (bits.size() + 7) / 8);
}

/// Returns: the value of width bits from `first` on; bits behind the end are 0.
inline std::uint64_t valueAt(const Bits& bits, std::uint64_t first, int width) {
    std::uint64_t value = 0;
    for (int i = 0; i < width; ++i) {
        const std::uint64_t place = first + static_cast<std::uint64_t>(i);
        if (place < bits.size() && bits[place]) value |= std::uint64_t{1} << i;
    }
    return value;
}

template <class Writer>
void writeFields(Writer& writer, const std::vector<Field>& fields) {
    for (const Field& field : fields)
        writer.writeInt(field.value, field.width);
}

template <class Writer>
void writeBits(Writer& writer, const Bits& bits) {
    for (const bool bit : bits)
        writer.writeBit(bit ? 1 : 0);
}

template <class Reader>
Bits readBits(Reader& reader, std::uint64_t count) {
    Bits bits;
    for (; count != 0; --count)
        bits.push_back(reader.readBit() != 0);
    return bits;
}

/// A file open for reading and writing, at its start, in a folder that is removed with it.
class ScratchFile {
public:
    explicit ScratchFile(const Bytes& contents = {}) : name(folder / "stream") {
        writeFile(name, contents);
        file = std::fopen(name.c_str(), "r+b");
        if (file == nullptr) throw std::runtime_error("cannot open " + name);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() {
        if (file != nullptr) std::fclose(file);
    }

    std::FILE* get() const { return file; }
    /// Makes somebody else responsible for closing the file.
    std::FILE* release() {
        std::FILE* released = file;
        file = nullptr;
        return released;
    }
    /// Returns: what stands on the disk, as far as stdio has been told to write it there.
    Bytes bytes() const {
        if (file != nullptr) std::fflush(file);
        return readFile(name);
    }

private:
    TempDir folder;
    std::string name;
    std::FILE* file;
};

}  // namespace test
