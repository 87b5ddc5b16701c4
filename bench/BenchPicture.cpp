#include "BenchPicture.h"

#include <cstdio>
#include <cstring>
#include <fstream>

#include "SampleScene.h"

namespace bench {
namespace {

Picture generated(const std::string& name, int bytesPerPixel, int bitsPerPixel) {
    const sample::Layout layout{3000, 2000, bytesPerPixel, bitsPerPixel};
    Picture picture{name, TESK_IMAGE_INIT, sample::makeImage(layout)};
    picture.image.width = static_cast<std::uint32_t>(layout.width);
    picture.image.height = static_cast<std::uint32_t>(layout.height);
    picture.image.bytes_per_pixel = static_cast<std::uint32_t>(bytesPerPixel);
    picture.image.bits_per_pixel = static_cast<std::uint32_t>(bitsPerPixel);
    return picture;
}

/// Reads what an --image argument names. Returns: false, after a line on standard error, when it
/// cannot.
bool readPicture(const char* argument, Picture& picture) {
    char name[4096];
    tesk_image& image = picture.image;
    if (std::sscanf(argument, "%4095[^,],%u,%u,%u,%u", name, &image.bytes_per_pixel,
                    &image.bits_per_pixel, &image.width, &image.height) != 5) {
        std::fprintf(stderr, "--image=%s: not FILE,BYTES/PIXEL,BITS/SAMPLE,WIDTH,HEIGHT\n",
                     argument);
        return false;
    }
    picture.name = name;
    picture.pixels.resize(picture.rowBytes() * image.height);
    std::ifstream file(name, std::ios::binary);
    file.read(reinterpret_cast<char*>(picture.pixels.data()),
              static_cast<std::streamsize>(picture.pixels.size()));
    if (!file.good()) std::fprintf(stderr, "%s: too short or not there\n", name);
    return file.good();
}

}  // namespace

Picture middleOf(const Picture& picture, std::uint32_t width, std::uint32_t height) {
    const auto pixelBytes = std::size_t{picture.image.bytes_per_pixel};
    const std::size_t column = (picture.image.width - width) / 2 * pixelBytes;
    const std::size_t firstRow = (picture.image.height - height) / 2;
    Picture middle{picture.name, picture.image, {}};
    middle.image.width = width;
    middle.image.height = height;
    middle.pixels.resize(middle.rowBytes() * height);
    for (std::size_t r = 0; r < height; ++r)
        std::memcpy(middle.pixels.data() + r * middle.rowBytes(),
                    picture.pixels.data() + (firstRow + r) * picture.rowBytes() + column,
                    middle.rowBytes());
    return middle;
}

std::vector<Picture> generatedPictures() {
    std::vector<Picture> pictures;
    pictures.push_back(generated("gray8", 1, 8));
    pictures.push_back(generated("rgb8", 3, 8));
    pictures.push_back(generated("gray12", 2, 12));
    pictures.push_back(generated("gray16", 2, 16));
    return pictures;
}

bool takePictures(int& argc, char** argv, std::vector<Picture>& pictures) {
    constexpr char kOption[] = "--image=";
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], kOption, sizeof kOption - 1) != 0) {
            argv[kept++] = argv[i];
            continue;
        }
        pictures.emplace_back();
        if (!readPicture(argv[i] + sizeof kOption - 1, pictures.back())) return false;
    }
    argc = kept;
    argv[argc] = nullptr;
    return true;
}

}  // namespace bench
