#include "coding/decode/WindowRefill.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "coding/decode/RunLookUp.h"

#define QMX_TARGET

namespace qmx {
namespace {

#include "coding/decode/WindowRefill.inl"

}  // namespace

std::uint32_t refillWindowsPlain(SectionWindow* first, SectionWindow* last,
                                 std::uint32_t capacity) {
    return refill(first, last, capacity);
}

}  // namespace qmx
