#include "ReferenceDecoder.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "ReferenceBits.h"
#include "ReferenceWavelet.h"

namespace reference {
namespace {

constexpr int kComplete = 0;
constexpr int kCut = 4;
constexpr int kInvalid = 128;

/// A section while it is read (docs/format.md, 13.2). Only n sections use `ended` and `run`.
struct OpenSection {
    BitReader reader;
    bool ended = false;
    std::int64_t run = 0;
};

/// The sections of a pair of colour plane and order, by bit plane, and the counters that number
/// them (docs/format.md, 13.1).
struct Band {
    std::int64_t nextN = 0;
    std::int64_t nextU = 0;
    std::map<std::int64_t, OpenSection> nSections;
    std::map<std::int64_t, OpenSection> uSections;
};

/// All bands by colour plane and order, the top plane and how the stream ended.
struct Sections {
    int status = kCut;
    std::int64_t top = -1;
    std::map<std::pair<std::int64_t, std::int64_t>, Band> bands;
};

/// The four fields of a section header (docs/format.md, 10.1).
struct SectionHeader {
    std::int64_t plane = 0;
    std::int64_t order = 0;
    bool refinement = false;
    std::int64_t length = 0;
};

/// Bytes that a short file lacks read as 0 (docs/format.md, 3).
std::int64_t headerByte(const std::vector<unsigned char>& file, std::size_t index) {
    return index < file.size() ? file[index] : 0;
}

bool hasMagic(const std::vector<unsigned char>& file) {
    return headerByte(file, 0) == 'T' && headerByte(file, 1) == 'K' && headerByte(file, 2) == '3' &&
           headerByte(file, 3) == '0';
}

/// docs/format.md, 3.
Geometry readGeometry(const std::vector<unsigned char>& file) {
    return {headerByte(file, 4), headerByte(file, 5),
            headerByte(file, 6) + 256 * headerByte(file, 7),
            headerByte(file, 8) + 256 * headerByte(file, 9)};
}

/// docs/format.md, 11.2. The one bit is consumed, but behind 41 zeros there is none.
std::int64_t countZeros(BitReader& reader) {
    std::int64_t zeros = 0;
    while (zeros < 41 && !reader.bit())
        ++zeros;
    return zeros;
}

/// docs/format.md, 11.2 and 11.3.
std::int64_t readRun(OpenSection& section) {
    const std::int64_t zeros = countZeros(section.reader);
    if (zeros == 0) return 0;
    if (zeros == 41) return (std::int64_t{1} << 30) + 1;
    if (zeros < 40) {
        return (std::int64_t{1} << (zeros - 1)) + section.reader.field(zeros - 1);
    }
    if (section.ended) return 41;
    section.ended = true;
    return readRun(section);
}

/// The three fields behind the plane field, which was read and was no end mark. Modulo 64 must be
/// that of mathematics, as the width may be negative (docs/format.md, 13.1).
SectionHeader readSectionHeader(BitReader& reader, const Geometry& geometry, std::int64_t plane) {
    SectionHeader header;
    header.plane = plane;
    header.order = reader.field(3);
    header.refinement = reader.bit();
    header.length = reader.field((lengthFieldBits(geometry, header.order) + 64) % 64);
    return header;
}

/// Notes where the payload begins, if the section has a bit plane that can hold something.
void addSection(Band& band, const SectionHeader& header, const BitString& bits,
                std::size_t position, std::int64_t coefficientBits) {
    const std::int64_t p = header.refinement ? band.nextU-- : band.nextN--;
    if (p < 0 || p >= coefficientBits) return;
    if (header.refinement) {
        band.uSections.insert({p, OpenSection{BitReader(bits, position)}});
        return;
    }
    // An empty n section yields zeros from its start (docs/format.md, 13.2).
    OpenSection section{BitReader(bits, header.length == 0 ? bits.size() : position)};
    section.run = readRun(section);
    band.nSections.insert({p, section});
}

/// Reads one section header and skips the payload. Returns false where parsing stops, with the
/// status set.
bool parseSection(Sections& sections, BitReader& reader, const BitString& bits,
                  const Geometry& geometry) {
    const std::int64_t plane = reader.field(2);
    if (plane == 3 && !reader.ended()) sections.status = kComplete;
    if (plane == 3 || reader.ended()) return false;
    const SectionHeader header = readSectionHeader(reader, geometry, plane);
    if (reader.ended()) return false;
    const auto band = sections.bands.find({header.plane, header.order});
    if (band == sections.bands.end()) {
        sections.status = kInvalid;
        return false;
    }
    addSection(band->second, header, bits, reader.position(), geometry.coefficientBits());
    reader.skip(header.length);
    return !reader.ended();
}

/// docs/format.md, 13.1.
Sections parseSections(const BitString& bits, const Geometry& geometry,
                       std::uint64_t sectionLimit) {
    Sections sections;
    BitReader reader(bits, 0);
    const std::int64_t top = reader.field(8);
    if (reader.ended()) return sections;
    sections.top = top == 255 ? -1 : top;
    const std::int64_t levels = levelCount(geometry.width, geometry.height);
    for (std::int64_t c = 0; c < geometry.planeCount(); ++c) {
        for (std::int64_t order = 0; order <= levels; ++order) {
            sections.bands[{c, order}] = {sections.top, sections.top - 1, {}, {}};
        }
    }
    std::uint64_t count = 0;
    while (parseSection(sections, reader, bits, geometry)) {
        if (++count == sectionLimit) break;
    }
    return sections;
}

/// Sets the bit below the highest plane that was not refined (docs/format.md, 13.3).
std::int64_t roundMagnitude(std::int64_t m, std::int64_t s, std::int64_t lastU) {
    const std::int64_t q = std::min(s - 1, lastU);
    return q >= 1 ? m | (std::int64_t{1} << (q - 1)) : m;
}

/// The coefficient that is new in plane s of its n section: sign, refinement bits, rounding.
std::int64_t newCoefficient(Band& band, OpenSection& section, std::int64_t s, std::int64_t bits) {
    const bool negative = section.reader.bit();
    section.run = readRun(section);
    std::int64_t m = std::int64_t{1} << s;
    for (std::int64_t q = s - 1; q >= std::max(band.nextU + 1, std::int64_t{0}); --q) {
        if (band.uSections.at(q).reader.bit()) m |= std::int64_t{1} << q;
    }
    m = roundMagnitude(m, s, band.nextU);
    return wrap(negative ? -m : m, bits);
}

/// The next coefficient of a band in raster order (docs/format.md, 13.2).
std::int64_t nextCoefficient(Band& band, std::int64_t top, std::int64_t bits) {
    const std::int64_t lowest = std::max(band.nextN + 1, std::int64_t{0});
    for (std::int64_t s = std::min(top, bits - 1); s >= lowest; --s) {
        OpenSection& section = band.nSections.at(s);
        if (section.run == 0) return newCoefficient(band, section, s, bits);
        --section.run;
    }
    return 0;
}

/// A pause leaves out its row and those in front of it in all planes but the first.
std::int64_t firstRow(std::int64_t plane, int pauseRow) {
    return plane > 0 && pauseRow >= 1 ? pauseRow + std::int64_t{1} : 0;
}

std::vector<Plane> decodeCoefficients(Sections& sections, const Geometry& geometry, int pauseRow) {
    std::vector<Plane> planes;
    const std::int64_t levels = levelCount(geometry.width, geometry.height);
    for (std::int64_t c = 0; c < geometry.planeCount(); ++c) {
        planes.emplace_back(geometry.width, geometry.height);
        if (sections.bands.empty()) continue;  // all coefficients are 0
        for (std::int64_t y = firstRow(c, pauseRow); y < geometry.height; ++y) {
            for (std::int64_t x = 0; x < geometry.width; ++x) {
                Band& band = sections.bands.at({c, orderOf(y, x, levels)});
                planes.back().at(y, x) =
                    nextCoefficient(band, sections.top, geometry.coefficientBits());
            }
        }
    }
    return planes;
}

/// Y, Dr, Db become R, G, B (docs/format.md, 5).
void invertColours(std::vector<Plane>& planes) {
    for (std::size_t i = 0; i < planes[0].values.size(); ++i) {
        const std::int64_t dr = planes[1].values[i];
        const std::int64_t db = planes[2].values[i];
        const std::int64_t g = planes[0].values[i] - ((dr + db) >> 2);
        planes[0].values[i] = wrap(g + dr, 16);
        planes[1].values[i] = wrap(g, 16);
        planes[2].values[i] = wrap(g + db, 16);
    }
}

/// Clamps a sample of a cut stream (docs/format.md, 14).
std::int64_t clamp(std::int64_t v, const Geometry& geometry) {
    if (geometry.bitsPerPixel == 0) return v;
    const std::int64_t m = std::int64_t{1} << (geometry.bitsPerPixel % 32);
    const std::int64_t mask = -m & ((std::int64_t{1} << geometry.coefficientBits()) - 1);
    if ((v & mask) == 0) return v;
    return v < 0 ? 0 : m - 1;
}

/// docs/format.md, 14.
std::vector<unsigned char> writeSamples(const std::vector<Plane>& planes, const Geometry& geometry,
                                        bool cut) {
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i < planes[0].values.size(); ++i) {
        for (const Plane& plane : planes) {
            const std::int64_t v = cut ? clamp(plane.values[i], geometry) : plane.values[i];
            for (std::int64_t k = 0; k < geometry.bytesPerSample(); ++k) {
                bytes.push_back(static_cast<unsigned char>((v >> (8 * k)) & 0xFF));
            }
        }
    }
    return bytes;
}

/// Every 2^reduction-th sample of every 2^reduction-th row.
Plane everyNth(const Plane& plane, int reduction) {
    const std::int64_t step = std::int64_t{1} << reduction;
    Plane picked((plane.width + step - 1) / step, (plane.height + step - 1) / step);
    for (std::int64_t y = 0; y < picked.height; ++y)
        for (std::int64_t x = 0; x < picked.width; ++x)
            picked.at(y, x) = plane.at(step * y, step * x);
    return picked;
}

/// The picture at 1 : 2^reduction (docs/format.md, 17); 0 is the image.
std::vector<unsigned char> makePicture(const std::vector<Plane>& coefficients, int reduction,
                                       const Geometry& geometry, bool cut) {
    std::vector<Plane> planes;
    for (Plane plane : coefficients) {
        if (reduction == 0) inverseTransform(plane, geometry.coefficientBits());
        if (reduction > 0) inverseTransformDownTo(plane, reduction, geometry.coefficientBits());
        planes.push_back(everyNth(plane, reduction));
    }
    if (planes.size() == 3) invertColours(planes);
    return writeSamples(planes, geometry, cut || reduction > 0);
}

/// The coefficients of a stream and how it ended; none if it is invalid.
struct Received {
    int status;
    std::vector<Plane> coefficients;
};

Received receive(const std::vector<unsigned char>& streamFile, const Geometry& geometry,
                 std::uint64_t sectionLimit, int pauseRow) {
    if (!hasMagic(streamFile) || !geometry.supported()) return {kInvalid, {}};
    const BitString bits(streamFile, static_cast<std::size_t>(kHeaderBytes));
    Sections sections = parseSections(bits, geometry, sectionLimit);
    if (sections.status == kInvalid) return {kInvalid, {}};
    const int usedPause = pauseRow < geometry.height ? pauseRow : 0;
    return {sections.status, decodeCoefficients(sections, geometry, usedPause)};
}

}  // namespace

Decoded decode(const std::vector<unsigned char>& streamFile, std::uint64_t sectionLimit,
               int pauseRow) {
    const Geometry geometry = readGeometry(streamFile);
    const Received received = receive(streamFile, geometry, sectionLimit, pauseRow);
    if (received.status == kInvalid) return {kInvalid, {}};
    return {received.status,
            makePicture(received.coefficients, 0, geometry, received.status == kCut)};
}

std::vector<Decoded> decodeReduced(const std::vector<unsigned char>& streamFile) {
    const Geometry geometry = readGeometry(streamFile);
    const Received received = receive(streamFile, geometry, 0, 0);
    if (received.status == kInvalid) return {};
    const std::int64_t levels =
        std::max<std::int64_t>(levelCount(geometry.width, geometry.height), std::int64_t{0});
    std::vector<Decoded> all;
    for (int k = 0; k <= levels; ++k)
        all.push_back({received.status,
                       makePicture(received.coefficients, k, geometry, received.status == kCut)});
    return all;
}

}  // namespace reference
