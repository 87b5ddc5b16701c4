#pragma once

#include <cstddef>
#include <cstring>

namespace test {

/// Returns: the index of a virtual operation in its class's table, where a destructor takes two
/// places. In the C++ ABI of Linux a pointer to a virtual member holds 8 * index, on x86-64 1 more.
template <class Member>
std::size_t slotOf(Member member) {
    static_assert(sizeof member == 2 * sizeof(std::size_t));
    std::size_t words[2];
    std::memcpy(words, &member, sizeof member);
    return words[0] / sizeof(void*);
}

}  // namespace test
