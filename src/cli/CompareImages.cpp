#include "cli/CompareImages.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

#include "cli/FatalErrors.h"
#include "cli/FileModes.h"
#include "cli/RawSurplus.h"
#include "container/FileIo.h"
#include "image/CImageData.h"

namespace qmx {
namespace {

/// Returns: the geometry with the sides of image planes, to which longer numbers wrap.
RawGeometry asUsed(RawGeometry geometry) {
    geometry.width = static_cast<int>(geometry.width);
    geometry.height = static_cast<int>(geometry.height);
    return geometry;
}

bool hasNegativeSide(const RawGeometry& geometry) {
    return geometry.width < 0 || geometry.height < 0;
}

template <class T>
double readAndCompare(const CommandLine& line, int planes, std::FILE* first, std::FILE* second) {
    const RawGeometry geometry = asUsed(line.geometry);
    reportSurplus(first, line.inputName, geometry);
    reportSurplus(second, line.otherName, geometry);
    const int width = static_cast<int>(geometry.width);
    const int height = static_cast<int>(geometry.height);
    CImageData<T> firstImage(width, height, planes);
    CImageData<T> secondImage(width, height, planes);
    std::puts("Reading...");
    firstImage.readRaw(first);
    secondImage.readRaw(second);
    return firstImage.getMSE(&secondImage);
}

double meanSquaredError(const CommandLine& line, std::FILE* first, std::FILE* second) {
    switch (line.geometry.bytesPerPixel) {
        case 1:
            return readAndCompare<short>(line, 1, first, second);
        case 2:
            return readAndCompare<int>(line, 1, first, second);
        case 3:
            return readAndCompare<short>(line, 3, first, second);
        default:
            return 0.0;
    }
}

}  // namespace

ErrorFigures errorFigures(double mse, long bitsPerPixel) {
    const auto shift = static_cast<unsigned long>(bitsPerPixel) % 64;
    const double peak = static_cast<std::int32_t>((std::uint64_t{1} << shift) - 1);
    return {mse, std::sqrt(mse), 10.0 * std::log10(peak * peak / mse)};
}

int compareFiles(const CommandLine& line) {
    rememberGeometry(line.geometry);
    if (hasNegativeSide(line.geometry) || hasNegativeSide(asUsed(line.geometry)))
        return reportImpossibleSize();
    const FilePtr first(openNamed(line.inputName, "rb"));
    if (!first) return 1;
    const FilePtr second(openNamed(line.otherName, "rb"));
    if (!second) return 1;
    rememberRawInput(first.get(), line.inputName);
    rememberRawInput(second.get(), line.otherName);
    const double mse = meanSquaredError(line, first.get(), second.get());
    const ErrorFigures figures = errorFigures(mse, line.geometry.bitsPerPixel);
    std::printf("MSE=%f RMSE=%f PSNR=%f\n", figures.mse, figures.rmse, figures.psnr);
    // The figures are all that this mode is for: losing them is not a success.
    return std::fflush(stdout) == 0 ? 0 : reportLostResult();
}

}  // namespace qmx
