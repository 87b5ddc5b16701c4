#pragma once

namespace qmx {

#pragma GCC visibility push(default)

/// Decompresses one stream in memory.
class ITeskDecompressor {
public:
    /// Width, height and type of the image, as the header has them: bytes per pixel may be a number that
    /// no image has.
    virtual int getBytesPerPixel() = 0;
    virtual int getBitsPerPixel() = 0;
    virtual int getXSize() = 0;
    virtual int getYSize() = 0;

    virtual ~ITeskDecompressor() = default;

    /// Decodes the stream and writes the pixels to out: rows from top to bottom without gaps, samples
    /// of 16 bits in the byte order of the machine. out may be at any address.
    ///
    /// Call it once, with room for all pixels: a later call decodes nothing, writes nothing and returns the
    /// number that decoding ended with, which is 0 or 4 after -1.
    ///
    /// Returns:
    ///  - 0: the stream is complete.
    ///  - 4: it ended early, out holds an approximation.
    ///  - -1: sizeBytes is too small, nothing is written. The pixels are lost.
    ///  - 8: it was stopped or killed.
    ///  - 16: it was killed while section headers were read. It may be called again, but stays killed.
    ///  - 128: an invalid stream, or a format that is not supported.
    ///
    /// Throws: std::bad_alloc; after it the object can only be destroyed.
    virtual int decompress(void* out, unsigned long sizeBytes) = 0;
    /// Ends decompress after the current row. Any thread, any time.
    virtual void stop() = 0;
    /// Ends decompress at the next section header or row. Any thread, any time.
    virtual void kill() = 0;
};

#pragma GCC visibility pop

}  // namespace qmx
