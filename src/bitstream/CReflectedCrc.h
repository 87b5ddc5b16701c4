#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx {

/// A cyclic redundancy check with as many bits as Word: the bits of the bytes and of the polynomial
/// reflected, all ones before and after.
///
/// Two byte strings of one length that differ in up to that many neighbouring bits never have the same
/// check, other pairs with a chance of 1 in 2^bits.
template <class Word, Word kPolynomial>
class CReflectedCrc {
public:
    /// Appends sizeBytes bytes; bytes may be null when there are none.
    void add(const unsigned char* bytes, std::size_t sizeBytes);
    Word value() const { return static_cast<Word>(~state); }

private:
    Word state = static_cast<Word>(~Word{0});
};

/// That of PNG and zlib. The check of "123456789" is cbf43926.
using CCrc32 = CReflectedCrc<std::uint32_t, 0xEDB88320>;
/// The polynomial of ECMA-182, as .xz files have it. The check of "123456789" is 995dc9bbdf1939fa.
using CCrc64 = CReflectedCrc<std::uint64_t, 0xC96C5795D7870F42>;

extern template class CReflectedCrc<std::uint32_t, 0xEDB88320>;
extern template class CReflectedCrc<std::uint64_t, 0xC96C5795D7870F42>;

}  // namespace qmx
