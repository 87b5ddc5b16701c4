#include "ReferenceEncoder.h"

#include <algorithm>
#include <cstddef>
#include <map>

#include "ReferenceBits.h"
#include "ReferenceSections.h"
#include "ReferenceWavelet.h"

namespace reference {
namespace {

/// What a pair of colour plane and order has to send: all its sections, by bit plane, and the bit
/// planes whose turn it is (docs/format.md, 12.1).
struct Band {
    std::int64_t plane = 0;
    std::int64_t order = 0;
    std::map<std::int64_t, Section> nSections;
    std::map<std::int64_t, Section> uSections;
    std::int64_t nextN = 0;
    std::int64_t nextU = 0;
};

/// The section that is sent next. No band means that all sections have been sent.
struct Choice {
    double value = -1.0;
    Band* band = nullptr;
    bool refinement = false;
};

Geometry geometryOf(const RawImage& image) {
    return {image.bytesPerPixel & 0xFF, image.bitsPerPixel & 0xFF, image.width & 0xFFFF,
            image.height & 0xFFFF};
}

std::size_t rawSize(const Geometry& geometry) {
    return static_cast<std::size_t>(geometry.pixelCount() * geometry.bytesPerPixel);
}

/// docs/format.md, 3.
BitString header(const Geometry& geometry) {
    BitString bits;
    for (const std::uint64_t c : {0x54U, 0x4BU, 0x33U, 0x30U})
        bits.append(c, 8);  // "TK30"
    bits.append(static_cast<std::uint64_t>(geometry.bytesPerPixel), 8);
    bits.append(static_cast<std::uint64_t>(geometry.bitsPerPixel), 8);
    bits.append(static_cast<std::uint64_t>(geometry.width), 16);
    bits.append(static_cast<std::uint64_t>(geometry.height), 16);
    bits.append(0, 48);
    return bits;
}

/// The sample of a colour plane, as the raw file stores it. A missing byte is 0 (docs/format.md,
/// 2).
std::int64_t rawSample(const RawImage& image, const Geometry& geometry, std::int64_t pixel,
                       std::int64_t plane) {
    std::int64_t sample = 0;
    for (std::int64_t i = 0; i < geometry.bytesPerSample(); ++i) {
        const std::int64_t offset =
            pixel * geometry.bytesPerPixel + plane * geometry.bytesPerSample() + i;
        const std::size_t index = static_cast<std::size_t>(offset);
        if (index < image.bytes.size()) sample += std::int64_t{image.bytes[index]} << (8 * i);
    }
    return sample;
}

std::vector<Plane> readPlanes(const RawImage& image, const Geometry& geometry) {
    std::vector<Plane> planes;
    for (std::int64_t c = 0; c < geometry.planeCount(); ++c) {
        planes.emplace_back(geometry.width, geometry.height);
        for (std::int64_t pixel = 0; pixel < geometry.pixelCount(); ++pixel) {
            planes.back().values[static_cast<std::size_t>(pixel)] =
                wrap(rawSample(image, geometry, pixel, c), geometry.coefficientBits());
        }
    }
    return planes;
}

/// R, G, B become Y, Dr, Db (docs/format.md, 5).
void transformColours(std::vector<Plane>& planes) {
    for (std::size_t i = 0; i < planes[0].values.size(); ++i) {
        const std::int64_t r = planes[0].values[i];
        const std::int64_t g = planes[1].values[i];
        const std::int64_t b = planes[2].values[i];
        planes[0].values[i] = (r + 2 * g + b) >> 2;
        planes[1].values[i] = r - g;
        planes[2].values[i] = b - g;
    }
}

/// Replaces the coefficients by their folded values (docs/format.md, 8).
void fold(Plane& plane, std::int64_t coefficientBits) {
    for (std::int64_t& v : plane.values)
        v = wrap(v >= 0 ? 2 * v : 1 - 2 * v, coefficientBits);
}

/// Everything up to the folded values.
std::vector<Plane> foldedPlanes(const RawImage& image, const Geometry& geometry) {
    std::vector<Plane> planes = readPlanes(image, geometry);
    if (planes.size() == 3) transformColours(planes);
    for (Plane& plane : planes) {
        forwardTransform(plane, geometry.coefficientBits());
        fold(plane, geometry.coefficientBits());
    }
    return planes;
}

/// docs/format.md, 8. Folded values are sign-extended, so their OR has the sign of the B-bit one.
std::int64_t topPlane(const std::vector<Plane>& planes) {
    std::int64_t all = 0;
    for (const Plane& plane : planes) {
        for (const std::int64_t f : plane.values)
            all |= f;
    }
    return all < 0 ? 61 : std::max(std::int64_t{0}, bitLength(all) - 2);
}

/// The rows before firstRow belong to no section (docs/format.md, 15, paused encoding).
FoldedValues scan(const Plane& plane, std::int64_t order, std::int64_t firstRow) {
    const std::int64_t levels = levelCount(plane.width, plane.height);
    FoldedValues values;
    for (std::int64_t y = firstRow; y < plane.height; ++y) {
        for (std::int64_t x = 0; x < plane.width; ++x) {
            if (orderOf(y, x, levels) == order) values.push_back(plane.at(y, x));
        }
    }
    return values;
}

Band makeBand(const Plane& plane, std::int64_t c, std::int64_t order, std::int64_t top,
              std::int64_t firstRow) {
    const FoldedValues values = scan(plane, order, firstRow);
    Band band{c, order, {}, {}, top, top - 1};
    for (std::int64_t p = 0; p <= top; ++p)
        band.nSections[p] = nSection(values, p);
    for (std::int64_t p = 0; p < top; ++p)
        band.uSections[p] = uSection(values, p);
    return band;
}

/// The bands in the order in which they are compared. Row n itself is left out by a pause, too.
std::vector<Band> makeBands(const std::vector<Plane>& planes, std::int64_t top,
                            std::int64_t pauseRow) {
    std::vector<Band> bands;
    for (std::size_t c = 0; c < planes.size(); ++c) {
        const Plane& plane = planes[c];
        const bool paused = c > 0 && pauseRow >= 1 && pauseRow < plane.height;
        const std::int64_t levels = levelCount(plane.width, plane.height);
        for (std::int64_t order = 0; order <= levels; ++order) {
            bands.push_back(makeBand(plane, static_cast<std::int64_t>(c), order, top,
                                     paused ? pauseRow + 1 : 0));
        }
    }
    return bands;
}

double weight(const Band& band) {
    return band.plane == 0 ? 1.0 : 0.2;
}

/// Repeated multiplication on purpose: a power function rounds differently (docs/format.md, 12.1).
double growth(std::int64_t exponent) {
    double g = 1.0;
    for (std::int64_t i = 0; i < exponent; ++i)
        g = g * 3.7;
    return g;
}

double nValue(const Band& band, std::int64_t p) {
    const Section& section = band.nSections.at(p);
    if (section.count == 0) return 4.2e11;
    double g = growth(p + band.order);
    g = g * weight(band);
    g = g * 8.0;
    const double product = static_cast<double>(section.count) * g;
    return product / static_cast<double>(section.payload.size() + 1);
}

double uValue(const Band& band, std::int64_t q) {
    return growth(q + band.order) * weight(band);
}

/// Takes a better candidate. On equal values the first one stands (docs/format.md, 12.1).
void consider(Choice& best, Band& band, bool refinement, double value) {
    if (value > best.value) best = {value, &band, refinement};
}

Choice bestSection(std::vector<Band>& bands) {
    Choice best;
    for (Band& band : bands) {
        const std::int64_t p = band.nextN;
        const std::int64_t q = band.nextU;
        if (p >= 0) consider(best, band, false, nValue(band, p));
        if (q >= std::max(p, std::int64_t{0})) consider(best, band, true, uValue(band, q));
    }
    return best;
}

/// docs/format.md, 10.1. The field drops the bits of the length that it cannot hold.
void appendSection(BitString& stream, const Geometry& geometry, const Choice& choice) {
    Band& band = *choice.band;
    const Section& section =
        choice.refinement ? band.uSections.at(band.nextU--) : band.nSections.at(band.nextN--);
    stream.append(static_cast<std::uint64_t>(band.plane), 2);
    stream.append(static_cast<std::uint64_t>(band.order), 3);
    stream.append(choice.refinement);
    stream.append(section.payload.size(), lengthFieldBits(geometry, band.order));
    stream.append(section.payload);
}

/// The stream behind the header (docs/format.md, 9).
BitString coefficientStream(const RawImage& image, const Geometry& geometry, int pauseRow) {
    const std::vector<Plane> planes = foldedPlanes(image, geometry);
    const std::int64_t top = topPlane(planes);
    std::vector<Band> bands = makeBands(planes, top, pauseRow);
    BitString stream;
    stream.append(static_cast<std::uint64_t>(top), 8);
    for (Choice next = bestSection(bands); next.band != nullptr; next = bestSection(bands)) {
        appendSection(stream, geometry, next);
    }
    stream.append(3, 2);
    stream.append(0, 9);
    return stream;
}

std::vector<unsigned char> streamFile(const RawImage& image, int pauseRow) {
    const Geometry geometry = geometryOf(image);
    if (!geometry.supported()) return {};
    BitString file = header(geometry);
    file.append(coefficientStream(image, geometry, pauseRow));
    return file.toBytes();
}

}  // namespace

std::vector<unsigned char> encode(const RawImage& image, int pauseRow) {
    if (image.bytes.size() < rawSize(geometryOf(image))) return {};
    return streamFile(image, pauseRow);
}

std::vector<unsigned char> encodeCut(const RawImage& image, std::uint64_t budgetBytes,
                                     int pauseRow) {
    std::vector<unsigned char> file = streamFile(image, pauseRow);
    const std::uint64_t limit = std::max(budgetBytes, std::uint64_t{kHeaderBytes});
    if (file.size() > limit) file.resize(static_cast<std::size_t>(limit));
    return file;
}

}  // namespace reference
