// The HDF5 filter with any values and any chunk, both ways: what it answers fits what it leaves behind.

#include <algorithm>
#include <cstring>

#include "ChunkValues.h"
#include "FuzzInput.h"
#include "H5Ztesk.h"

namespace {

/// Larger chunks take time. The values of a file may name any.
constexpr std::size_t kMostChunkBytes = 300000;

struct Call {
    unsigned flags;
    std::size_t valueCount;
    unsigned values[kChunkValueCount + 1];
};

/// Most inputs name values of a chunk, others any.
Call takeCall(fuzz::FuzzInput& input) {
    Call call{input.flag() ? H5Z_FLAG_REVERSE : 0U, kChunkValueCount, {kChunkVersion}};
    if (input.flag()) call.flags |= H5Z_FLAG_OPTIONAL;
    const bool any = input.flag();
    if (any) call.valueCount = input.below(kChunkValueCount + 2);
    for (int i = any ? 0 : 1; i < kChunkValueCount; ++i)
        call.values[i] = static_cast<unsigned>(input.number(any ? 4 : i == 2 || i == 3 ? 2 : 1));
    return call;
}

/// Returns: what the filter returns; bytes are what it leaves.
std::size_t run(const Call& call, fuzz::Bytes& bytes) {
    H5Eclear2(H5E_DEFAULT);
    std::size_t bufferBytes = bytes.size() + 1;
    void* block = H5allocate_memory(bufferBytes, false);
    std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(block));
    const std::size_t made = kTeskFilter.filter(call.flags, call.valueCount, call.values,
                                                bytes.size(), &bufferBytes, &block);
    fuzz::require(made <= bufferBytes, "the buffer holds what is returned");
    const auto* now = static_cast<unsigned char*>(block);
    if (made == 0)
        fuzz::require(std::equal(bytes.begin(), bytes.end(), now), "failures change nothing");
    if (made != 0) bytes.assign(now, now + made);
    H5free_memory(block);
    return made;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    Call call = takeCall(input);
    ChunkValues chunk;
    const bool isChunk = readChunkValues(call.valueCount, call.values, &chunk) != 0;
    if (isChunk && rawBytes(&chunk) > kMostChunkBytes) return 0;
    fuzz::Bytes bytes = input.rest();
    const bool encodes = (call.flags & H5Z_FLAG_REVERSE) == 0;
    if (encodes && isChunk) bytes.resize(rawBytes(&chunk));
    const fuzz::Bytes given = bytes;
    const std::size_t made = run(call, bytes);
    if (made == 0) return 0;
    fuzz::require(isChunk, "only values of a chunk are taken");
    fuzz::require(encodes || made == rawBytes(&chunk), "a chunk that is read is whole");
    // What was read is written, and what was written is read.
    call.flags ^= H5Z_FLAG_REVERSE;
    call.flags &= ~static_cast<unsigned>(H5Z_FLAG_OPTIONAL);
    fuzz::Bytes again = bytes;
    fuzz::require(run(call, again) != 0, "the other way succeeds");
    if (encodes) fuzz::require(again == given, "a chunk comes back");
    return 0;
}
