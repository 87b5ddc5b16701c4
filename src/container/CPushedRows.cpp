#include "container/CPushedRows.h"

#include "image/UsedBits.h"

namespace qmx {

void CPushedRows::push(const unsigned char* pixels) {
    current = pixels;
    pushed.add(pixels, header.rawRowBytes());
    used |= usedBitsOf(pixels, header.rawRowBytes(), header.bytesPerPixel);
}

bool CPushedRows::isSameRow(int r, const unsigned char* decoded, std::size_t sizeBytes) {
    if (r == 0) compared = {};
    compared.add(decoded, sizeBytes);
    return r < header.ySize - 1 || compared.value() == pushed.value();
}

}  // namespace qmx
