#pragma once

#include "image/CImageData.h"

namespace qmx {

/// Takes the rows of an image one by one, from a decoder that never has all of them at once.
template <class T>
class IRowSink {
public:
    virtual ~IRowSink() = default;
    /// Takes row r of the image, of all planes and before the inverse colour transform, which stands in
    /// row `slot` of rows. Returns: whether there shall be more.
    virtual bool take(const CImageData<T>& rows, int slot, int r) = 0;
};

}  // namespace qmx
