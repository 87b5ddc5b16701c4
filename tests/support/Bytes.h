#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace test {

using Bytes = std::vector<unsigned char>;

inline Bytes readFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    EXPECT_TRUE(file.good()) << "cannot open " << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::string& name, const Bytes& bytes) {
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.good()) << "cannot write " << name;
}

inline Bytes prefixOf(const Bytes& bytes, std::size_t sizeBytes) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(sizeBytes)};
}

/// Compares byte strings; a failure names the first place where they differ instead of printing
/// thousands of numbers.
inline testing::AssertionResult sameBytes(const Bytes& expected, const Bytes& actual) {
    if (expected == actual) return testing::AssertionSuccess();
    const auto place =
        std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end()).first -
        expected.begin();
    return testing::AssertionFailure() << "expected " << expected.size() << " bytes, got "
                                       << actual.size() << "; first difference at byte " << place;
}

}  // namespace test
