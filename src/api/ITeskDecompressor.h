#pragma once

namespace qmx {

#pragma GCC visibility push(default)

/// Decompresses one stream in memory.
class ITeskDecompressor {
public:
    /// The geometry that the header names, as it stands there: bytes per pixel may be a number that
    /// no image has.
    virtual int getBytesPerPixel() = 0;
    virtual int getBitsPerPixel() = 0;
    virtual int getXSize() = 0;
    virtual int getYSize() = 0;

    virtual ~ITeskDecompressor() = default;

    /// Decodes the stream and writes the pixels to out: rows from top to bottom without gaps, samples
    /// of 16 bits in the byte order of the machine. out may stand at any address.
    ///
    /// Returns: 0 when the stream is complete; 4 when it ended early and out holds an approximation;
    /// -1 when sizeBytes is too small, nothing is written; 8 when it was stopped or killed; 16 when
    /// it was killed while section headers were read: it may be called again, but stays killed; 128
    /// for an invalid stream or a format that is not supported.
    /// A later call returns the number that this one ended with and writes nothing. After -1 that
    /// is 0 or 4: the pixels are lost, so ask for the size first.
    /// Throws: std::bad_alloc; the object is then good for nothing but destruction.
    virtual int decompress(void* out, unsigned long sizeBytes) = 0;
    /// Ends decompress after the current row. Any thread, any time.
    virtual void stop() = 0;
    /// Ends decompress at the next section header or row. Any thread, any time.
    virtual void kill() = 0;
};

#pragma GCC visibility pop

}  // namespace qmx
