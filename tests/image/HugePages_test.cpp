#include "image/HugePages.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace {

TEST(HugePages, AHintChangesNeitherBytesNorErrno) {
    for (const std::size_t sizeBytes : {std::size_t{0}, std::size_t{5000}, std::size_t{9} << 20}) {
        const auto block = std::make_unique<unsigned char[]>(sizeBytes + 1);
        std::memset(block.get(), 0x5A, sizeBytes);
        errno = ERANGE;
        qmx::adviseHugePages(block.get(), sizeBytes);
        EXPECT_EQ(errno, ERANGE);
        for (std::size_t i = 0; i < sizeBytes; ++i)
            ASSERT_EQ(block[i], 0x5A);
    }
    // What is no mapped block is refused by the system.
    errno = ERANGE;
    qmx::adviseHugePages(reinterpret_cast<void*>(4096), std::size_t{8} << 20);
    EXPECT_EQ(errno, ERANGE);
}

}  // namespace
