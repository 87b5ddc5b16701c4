#pragma once

#include "image/CImageData.h"

namespace qmx {

/// Gives the rows of an image, one after the other.
template <class T>
class IRowSource {
public:
    virtual ~IRowSource() = default;
    /// Puts row r of the image, of all planes and after the colour transform, into row `slot` of rows.
    /// Requires: each row once, from 0 on.
    /// Throws: what the source throws, 3 when there are no more rows.
    virtual void load(CImageData<T>& rows, int slot, int r) = 0;
};

}  // namespace qmx
