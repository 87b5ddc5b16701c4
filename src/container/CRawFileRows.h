#pragma once

#include <cstdio>
#include <memory>

#include "container/FileIo.h"
#include "container/IPixelRows.h"
#include "container/TKHeader.h"

namespace qmx {

/// The rows of a raw file, read when they are asked for. To begin again, a file that can seek is read once
/// more; the rows of another one are kept.
class CRawFileRows final : public IPixelRows {
public:
    /// rawFile: stands at row 0; closed with this object. Throws: std::bad_alloc.
    CRawFileRows(const TKHeader& header, FilePtr rawFile);

    const unsigned char* row(int r) override;

private:
    unsigned char* placeOf(int r) const;

    FilePtr file;
    std::int64_t start;
    std::size_t rowBytes;
    /// One row, or all.
    std::unique_ptr<unsigned char[]> bytes;
    int rowsRead = 0;
    int rowsAsked = 0;
};

}  // namespace qmx
