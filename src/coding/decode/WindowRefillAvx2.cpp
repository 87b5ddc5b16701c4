#include <algorithm>
#include <bit>
#include <cstring>

#include "coding/decode/RunLookUp.h"
#include "coding/decode/WindowRefill.h"
#include "image/CpuLevel.h"

#define QMX_TARGET QMX_TARGET_AVX2

namespace qmx {
namespace {

#include "coding/decode/WindowRefill.inl"

}  // namespace

QMX_TARGET std::uint32_t refillWindowsAvx2(SectionWindow* first, SectionWindow* last,
                                           std::uint32_t capacity) {
    return refill(first, last, capacity);
}

}  // namespace qmx
