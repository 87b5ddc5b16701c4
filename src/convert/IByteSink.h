#pragma once

#include <string_view>

#include "convert/Buffer.h"

namespace qmx {

/// Where the bytes of an output go.
class IByteSink {
public:
    virtual ~IByteSink() = default;
    /// Throws: Refusal where they do not arrive.
    virtual void write(ByteView bytes) = 0;

    void write(std::string_view text) {
        write(ByteView(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
    }
};

}  // namespace qmx
