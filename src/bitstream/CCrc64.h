#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx {

/// A cyclic redundancy check of 64 bits: the polynomial of ECMA-182, bits reflected, all ones before and
/// after, as .xz files have it. The check of "123456789" is 995dc9bbdf1939fa.
///
/// Two byte strings of one length that differ in up to 64 neighbouring bits never have the same
/// check, other pairs with a chance of 1 in 2^64.
class CCrc64 {
public:
    /// Appends sizeBytes bytes; bytes may be null when there are none.
    void add(const unsigned char* bytes, std::size_t sizeBytes);
    std::uint64_t value() const { return ~state; }

private:
    std::uint64_t state = ~std::uint64_t{0};
};

}  // namespace qmx
