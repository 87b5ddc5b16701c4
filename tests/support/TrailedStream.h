#pragma once

#include "support/Bytes.h"
#include "trailer/CTrailerWriter.h"

namespace test {

/// Returns: a stream with a trailer of two boxes behind it, one of which has all bits set.
inline Bytes trailed(Bytes stream) {
    const Bytes name = {'d', 'o', 't'};
    qmx::CTrailerWriter writer;
    writer.add("desc", name);
    writer.add("ones", Bytes(5, 0xFF));
    const Bytes trailer = writer.finish(stream);
    stream.insert(stream.end(), trailer.begin(), trailer.end());
    return stream;
}

}  // namespace test
