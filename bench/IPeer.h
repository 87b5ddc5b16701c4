#pragma once

#include <memory>
#include <span>
#include <string>

#include "BenchPicture.h"

// The codecs that are compared, each behind the same three functions: raw pixels in memory to a
// lossless stream in memory and back. What a library needs besides (planes of other types, objects of
// its own) is made and released within the calls, and counts.

namespace bench {

class IPeer {
public:
    IPeer() = default;
    IPeer(const IPeer&) = delete;
    IPeer& operator=(const IPeer&) = delete;
    virtual ~IPeer() = default;

    virtual const char* name() const = 0;
    virtual std::string version() const = 0;
    /// Returns: whether one round is enough, or a table would take hours.
    virtual bool isSlow() const { return false; }
    /// Returns: why the codec cannot take such a picture, or null.
    virtual const char* refusalOf(const Picture&) const { return nullptr; }
    /// Requires: room has picture.streamRoomBytes(). Returns: the bytes of the stream.
    /// Throws: std::exception when the library refuses.
    virtual std::size_t compress(const Picture& picture, std::span<unsigned char> room) = 0;
    /// Decodes the stream of a picture; of the picture itself only the layout is used.
    /// Throws: std::exception when the library refuses.
    virtual void decompress(std::span<const unsigned char> stream, const Picture& layout,
                            std::span<unsigned char> pixels) = 0;
};

using Peer = std::unique_ptr<IPeer>;

/// With verified false a stream is not compared with its image.
Peer makeTesk(bool verified);
Peer makeMemcpy();
// These exist where their libraries were found: bench/CMakeLists.txt.
Peer makeOpenjph();
Peer makeOpenjpeg();
Peer makeCharls();
Peer makeLibjxl(int effort);
Peer makeWebp();
Peer makeLibpng();

}  // namespace bench
