#include "container/CPushedRows.h"

#include <cassert>

#include "image/UsedBits.h"

namespace qmx {

void CPushedRows::push(const unsigned char* pixels) {
    current = pixels;
    ++count;
    pushed.add(pixels, header.rawRowBytes());
    used |= usedBitsOf(pixels, header.rawRowBytes(), header.bytesPerPixel);
}

const unsigned char* CPushedRows::row([[maybe_unused]] int r) {
    assert(r == count - 1);
    return current;
}

bool CPushedRows::isSameRow(int r, const unsigned char* decoded, std::size_t sizeBytes) {
    if (r == 0) compared = {};
    compared.add(decoded, sizeBytes);
    return r < header.ySize - 1 || compared.value() == pushed.value();
}

}  // namespace qmx
