#pragma once

#include <cstddef>
#include <memory>

#include "api/tesk.h"

namespace test {

/// Hooks that hand out pieces of one array, and so need no allocator themselves.
class Arena {
public:
    tesk_options options() {
        tesk_options chosen = TESK_OPTIONS_INIT;
        chosen.allocate = [](void* user, std::size_t size) -> void* {
            Arena& arena = *static_cast<Arena*>(user);
            const std::size_t place = arena.used;
            arena.used += (size + 15) / 16 * 16;
            if (arena.used > kBytes) return nullptr;
            ++arena.live;
            return arena.bytes.get() + place;
        };
        chosen.release = [](void* user, void*) { --static_cast<Arena*>(user)->live; };
        chosen.user = this;
        return chosen;
    }

    int live = 0;

private:
    static constexpr std::size_t kBytes = 1 << 24;

    std::size_t used = 0;
    std::unique_ptr<unsigned char[]> bytes{new unsigned char[kBytes]};
};

}  // namespace test
