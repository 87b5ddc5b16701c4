// Makes a photograph-like raw image: `sample_image WIDTH HEIGHT FILE [BYTES/PIXEL BITS/PIXEL]`, 8-bit
// gray without the last two.

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "SampleScene.h"

int main(int argc, char** argv) {
    if (argc != 4 && argc != 6) {
        std::fputs("Usage: sample_image WIDTH HEIGHT FILE [BYTES/PIXEL BITS/PIXEL]\n", stderr);
        return 1;
    }
    sample::Layout layout{std::atoi(argv[1]), std::atoi(argv[2]), 1, 8};
    if (argc == 6) layout.bytesPerPixel = std::atoi(argv[4]);
    if (argc == 6) layout.bitsPerPixel = std::atoi(argv[5]);
    const std::vector<unsigned char> bytes = sample::makeImage(layout);
    std::ofstream file(argv[3], std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file.good()) return 0;
    std::fprintf(stderr, "sample_image: cannot write '%s'\n", argv[3]);
    return 1;
}
