#pragma once

#include "api/CompressRequest.h"

namespace qmx {

/// A block for the caller, as long as the stream.
class COutputBlock final : public IStreamPlace {
public:
    /// Sets *address to null.
    explicit COutputBlock(void** address) : block(address) { *block = nullptr; }

    unsigned char* take(std::size_t sizeBytes, std::pmr::memory_resource& memory) override {
        *block = memory.allocate(sizeBytes);
        return static_cast<unsigned char*>(*block);
    }
    /// Releases the block of a call that came to nothing. Returns: status.
    tesk_status keepIfUsable(tesk_status status, tesk_codec* codec) {
        if (status == TESK_OK || status == TESK_CUT) return status;
        if (*block != nullptr) tesk_release_block(codec, *block);
        *block = nullptr;
        return status;
    }

private:
    void** block;
};

}  // namespace qmx
