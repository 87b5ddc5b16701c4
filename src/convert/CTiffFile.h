#pragma once

#include <array>
#include <cstdarg>
#include <cstdint>
#include <string>
#include <tiffio.h>
#include <vector>

#include "convert/Buffer.h"

namespace qmx {

/// A TIFF in memory, open by libtiff, whose words it keeps. It is read from a view, or grows in a vector.
class CTiffFile {
public:
    /// Opens a file for reading. Throws: Refusal where it cannot be opened; std::bad_alloc.
    explicit CTiffFile(ByteView file);
    /// Begins a file, a BigTIFF where its samples may need one. Requires: written outlives this object.
    /// Throws: as above.
    CTiffFile(std::vector<unsigned char>& written, std::uint64_t rawBytes);
    CTiffFile(const CTiffFile&) = delete;
    CTiffFile& operator=(const CTiffFile&) = delete;
    ~CTiffFile();

    TIFF* get() { return tiff; }
    /// Ends what is written. Returns: whether all went well.
    bool close();

    /// A field that is a number; fallback where there is none.
    template <class Number>
    Number number(std::uint32_t tag, Number fallback) {
        Number value{};
        return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : fallback;
    }

    /// Says that samples are read from now on: what libtiff then only warns of is damage, too, as it goes on with
    /// others in their place. Forgets whether the end was met.
    void beginSamples() {
        isInSamples = true;
        metEnd = false;
    }
    bool endedEarly() const { return metEnd; }
    /// What libtiff said first.
    std::string words() const;
    /// Throws: Refusal when libtiff has said that something is wrong, whatever it returned.
    void requireSound() const {
        if (hasFailed) refuse();
    }
    /// What libtiff warned of, but for tags that it does not know: those have their own list.
    std::vector<std::string> warnings() const;
    /// Throws: Refusal with these words.
    [[noreturn]] void refuse() const;

private:
    void open(const char* mode, std::size_t mostBytesAtOnce);
    static int onError(TIFF* tiff, void* self, const char* module, const char* format,
                       va_list values);
    static int onWarning(TIFF* tiff, void* self, const char* module, const char* format,
                         va_list values);
    static tmsize_t read(thandle_t self, void* to, tmsize_t sizeBytes);
    static tmsize_t write(thandle_t self, void* from, tmsize_t sizeBytes);
    static toff_t seek(thandle_t self, toff_t offset, int whence);
    static toff_t size(thandle_t self);
    std::uint64_t sizeBytes() const { return output != nullptr ? output->size() : input.size(); }

    ByteView input;
    std::vector<unsigned char>* output = nullptr;
    std::uint64_t position = 0;
    bool metEnd = false;
    bool isInSamples = false;
    bool hasFailed = false;
    using Words = std::array<char, 200>;
    Words error{};
    std::array<Words, 4> warned{};
    std::size_t warnedCount = 0;
    TIFF* tiff = nullptr;
};

}  // namespace qmx
