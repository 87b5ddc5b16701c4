#pragma once

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <png.h>
#include <string>

namespace qmx {

/// What libpng says while it works. Its callbacks must not throw through it, so texts stay in here.
struct PngWords {
    static constexpr std::size_t kMostWarnings = 4;

    std::array<char, 160> error{};
    std::array<std::array<char, 160>, kMostWarnings> warnings{};
    std::size_t warningCount = 0;

    [[noreturn]] static void onError(png_structp png, png_const_charp text) {
        auto* words = static_cast<PngWords*>(png_get_error_ptr(png));
        std::snprintf(words->error.data(), words->error.size(), "%s", text);
        png_longjmp(png, 1);
    }

    static void onWarning(png_structp png, png_const_charp text) {
        auto* words = static_cast<PngWords*>(png_get_error_ptr(png));
        for (std::size_t i = 0; i < words->warningCount; ++i)
            if (std::strncmp(words->warnings[i].data(), text, words->warnings[i].size() - 1) == 0)
                return;
        if (words->warningCount == kMostWarnings) return;
        auto& warning = words->warnings[words->warningCount++];
        std::snprintf(warning.data(), warning.size(), "%s", text);
    }
};

/// Runs a step that calls libpng, which leaves by longjmp where it fails. Requires: what the step and what it
/// calls make of their own needs no destructor. Returns: whether it came to its end.
template <class Step>
bool completes(png_structp png, const Step& step) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    step();
    return true;
}

}  // namespace qmx
