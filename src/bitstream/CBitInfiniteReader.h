#pragma once

#include <array>
#include <memory>

#include "bitstream/CBitReader.h"

namespace qmx {

/// Goes on from where another reader stands and, behind the end of its data, delivers zero bits for
/// ever; the length that create is told does not end it (Quirk 14). The coefficient decoder reads each
/// section through one. If the other reader reads a file, this one reads the same file through a window of
/// its own, which it makes when it needs it.
/// getTotal counts from the start of the current window or of the zeros; between create and the
/// first window it is below 0 and wraps.
class CBitInfiniteReader final : public CBitReader {
public:
    CBitInfiniteReader() : CBitReader(nullptr, 0) {}

    /// Requires: source's data or file outlives this reader.
    void create(CBitReader* source, std::uint64_t lengthBits) override;
    /// Installs the next window of the file, or zeros. Throws: std::bad_alloc.
    void fetch() override;

    /// Seeks if the data come from a file. Throws: as fetch.
    void skip(std::uint64_t nbits) override;
    FilePosition filePosition() const override;

private:
    bool fetchWindow();
    /// Makes the next read start at a place in a file.
    void moveTo(const FilePosition& place);

    /// Read again and again by every infinite reader.
    static inline const std::array<std::uint64_t, 64> kZeroBuffer{};

    /// Where the data behind the window go on; no file when there are none.
    FilePosition next;
    std::unique_ptr<unsigned char[]> window;
};

}  // namespace qmx
