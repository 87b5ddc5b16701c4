#pragma once

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>

#include "support/GuardedBuffer.h"

namespace test {

/// A stack between two pages that may not be touched, for one thread at a time.
class PaintedStack {
public:
    explicit PaintedStack(std::size_t leastBytes) : room(leastBytes) {}

    /// Does work on a thread with this stack. Returns: the bytes from the top of the stack to the last one that
    /// was written, those of the thread itself included.
    std::size_t bytesUsedBy(std::function<void()> work) {
        std::fill(room.begin(), room.end(), kPaint);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        EXPECT_EQ(pthread_attr_setstack(&attributes, room.begin(), sizeBytes()), 0);
        pthread_t thread{};
        EXPECT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
        EXPECT_EQ(pthread_join(thread, nullptr), 0);
        pthread_attr_destroy(&attributes);
        const unsigned char* deepest = std::find_if(
            room.begin(), room.end(), [](unsigned char byte) { return byte != kPaint; });
        return static_cast<std::size_t>(room.end() - deepest);
    }

    std::size_t sizeBytes() const { return static_cast<std::size_t>(room.end() - room.begin()); }

private:
    static constexpr unsigned char kPaint = 0xA5;

    static void* run(void* work) {
        (*static_cast<std::function<void()>*>(work))();
        return nullptr;
    }

    GuardedRoom room;
};

}  // namespace test
