#pragma once

#include <cstring>

#include "convert/Buffer.h"
#include "convert/PngGuard.h"

namespace qmx {

/// A PNG in memory, read by libpng. Owns the structures of libpng.
class CPngSource {
public:
    /// Throws: std::bad_alloc.
    explicit CPngSource(ByteView fileBytes);
    CPngSource(const CPngSource&) = delete;
    CPngSource& operator=(const CPngSource&) = delete;
    ~CPngSource() { png_destroy_read_struct(&png, &info, nullptr); }

    /// Throws: Refusal where the step fails, as the file is damaged; std::bad_alloc.
    template <class Step>
    void run(const Step& step) {
        if (!completes(png, step)) refuse();
    }
    /// As run, for a step that knows in which row of how many it is, from 0.
    template <class Step>
    void runInRows(const std::size_t& row, std::size_t height, const Step& step) {
        if (!completes(png, step)) refuseInRow(row, height);
    }

    std::size_t bytesLeft() const { return file.size() - next; }

    png_structp png = nullptr;
    png_infop info = nullptr;
    PngWords words;

private:
    static void read(png_structp png, png_bytep to, std::size_t sizeBytes);
    /// Throws: std::bad_alloc where libpng lacked memory.
    void requireMemory() const;
    [[noreturn]] void refuse() const;
    [[noreturn]] void refuseInRow(std::size_t row, std::size_t height) const;

    ByteView file;
    std::size_t next = 0;
    bool isAtEnd = false;
};

}  // namespace qmx
