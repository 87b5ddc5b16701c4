// Raw rows to rows of planes and back, against the formulas of docs/format.md, 2, 5 and 14.

#include "image/PixelRows.h"

#include "support/CpuLevels.h"
#include "support/GuardedBuffer.h"

namespace {

using qmx::CImageData;
using test::Side;
using Bytes = std::vector<unsigned char>;

/// One row of each plane.
template <class T>
using Rows = std::vector<std::vector<T>>;

constexpr int kSlots = 3;
constexpr int kSlot = 1;
constexpr unsigned char kUntouched = 0x5A;

/// A raw row that ends where nothing may be touched, and one at an odd address between two bytes.
struct Place {
    Side side;
    std::size_t besides;

    Bytes around(const Bytes& raw) const {
        Bytes bytes(besides, kUntouched);
        bytes.insert(bytes.end(), raw.begin(), raw.end());
        bytes.resize(raw.size() + 2 * besides, kUntouched);
        return bytes;
    }
};
constexpr Place kPlaces[] = {{Side::atEnd, 0}, {Side::atStart, 1}};

template <class T>
void expectLoaded(int bytesPerPixel, const Bytes& raw, const Rows<T>& expected) {
    const std::size_t width = expected[0].size();
    for (const Place& place : kPlaces) {
        CImageData<T> rows(static_cast<int>(width), kSlots, static_cast<int>(expected.size()));
        for (int p = 0; p < rows.planes; ++p)
            std::fill_n(rows.plane[p], kSlots * rows.stride, T{kUntouched});
        const test::GuardedBuffer<unsigned char> bytes(place.around(raw), place.side);
        qmx::loadRow(rows, kSlot, bytesPerPixel, bytes.data() + place.besides);
        for (int p = 0; p < rows.planes; ++p) {
            std::vector<T> all(static_cast<std::size_t>(kSlots * rows.stride), T{kUntouched});
            std::copy(expected[static_cast<std::size_t>(p)].begin(),
                      expected[static_cast<std::size_t>(p)].end(), all.begin() + rows.stride);
            EXPECT_TRUE(std::equal(all.begin(), all.end(), rows.plane[p])) << "plane " << p;
        }
    }
}

template <class T>
void expectStored(int bytesPerPixel, int bits, const Rows<T>& samples, const Bytes& expected) {
    CImageData<T> rows(static_cast<int>(samples[0].size()), kSlots,
                       static_cast<int>(samples.size()));
    for (int p = 0; p < rows.planes; ++p)
        std::copy(samples[static_cast<std::size_t>(p)].begin(),
                  samples[static_cast<std::size_t>(p)].end(), rows.row(p, kSlot));
    for (const Place& place : kPlaces) {
        const Bytes before(expected.size(), kUntouched);
        const test::GuardedBuffer<unsigned char> bytes(place.around(before), place.side);
        qmx::storeRow(rows, kSlot, bytesPerPixel, qmx::CSampleLimit<T>(bits),
                      bytes.data() + place.besides);
        EXPECT_TRUE(bytes.samples() == place.around(expected)) << bits << " bits";
    }
}

/// docs/format.md, 14, of a cut stream.
template <class T>
std::int64_t limited(T sample, int bits) {
    if (bits <= 0) return sample;
    const std::int64_t m = std::int64_t{1} << bits % 32;
    const std::int64_t mask = -m & ((std::int64_t{1} << 8 * sizeof(T)) - 1);
    if ((sample & mask) == 0) return sample;
    return sample < 0 ? 0 : m - 1;
}

/// Appends the low bytes of a number.
void append(Bytes& bytes, std::int64_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

template <class T>
void expectLimited(int bytesPerPixel, const std::vector<T>& samples) {
    for (int bits = -3; bits <= 40; ++bits) {
        Bytes expected;
        for (const T sample : samples)
            append(expected, limited(sample, bits), bytesPerPixel);
        expectStored<T>(bytesPerPixel, bits, {samples}, expected);
    }
}

/// Calls take with each three of values.
template <class Take>
void forEachPixel(const std::vector<int>& values, Take take) {
    for (const int first : values)
        for (const int second : values)
            for (const int third : values)
                take(first, second, third);
}

std::vector<short> allShorts() {
    std::vector<short> shorts;
    for (int i = 0; i < 65536; ++i)
        shorts.push_back(static_cast<short>(i));
    return shorts;
}

class PixelRows : public test::AtCpuLevel {};

TEST_P(PixelRows, SamplesAreWidenedWithoutSign) {
    Bytes raw;
    for (int i = 0; i < 256; ++i)
        raw.push_back(static_cast<unsigned char>(i));
    expectLoaded<short>(1, raw, {std::vector<short>(raw.begin(), raw.end())});

    Bytes raw16;
    std::vector<int> samples;
    for (int i = 0; i < 65536; ++i) {
        append(raw16, i, 2);
        samples.push_back(i);
    }
    expectLoaded<int>(2, raw16, {samples});
    // As shorts they wrap.
    expectLoaded<short>(2, raw16, {allShorts()});
}

TEST_P(PixelRows, SamplesAreLimitedOrWrapWhenTheyAreWritten) {
    expectLimited<short>(1, allShorts());
    expectLimited<short>(2, allShorts());
    std::vector<int> ints{std::numeric_limits<int>::min()};
    for (int bit = 0; bit < 31; ++bit)
        for (const int distance : {-1, 0, 1}) {
            ints.push_back((1 << bit) + distance);
            ints.push_back(-(1 << bit) + distance);
        }
    ints.push_back(std::numeric_limits<int>::max());
    expectLimited<int>(2, ints);
}

TEST_P(PixelRows, ColoursAreTransformedAndComeBack) {
    Bytes raw;
    Rows<short> planes(3);
    forEachPixel({0, 1, 2, 3, 127, 128, 253, 254, 255}, [&](int red, int green, int blue) {
        for (const int sample : {red, green, blue})
            append(raw, sample, 1);
        planes[0].push_back(static_cast<short>((red + 2 * green + blue) / 4));
        planes[1].push_back(static_cast<short>(red - green));
        planes[2].push_back(static_cast<short>(blue - green));
    });
    expectLoaded<short>(3, raw, planes);
    expectStored<short>(3, 0, planes, raw);
    expectStored<short>(3, 8, planes, raw);
}

TEST_P(PixelRows, ColoursOfAnyPlanesWrapAndAreThenLimited) {
    for (const int bits : {0, 3, 8, 10, 32}) {
        Rows<short> planes(3);
        Bytes expected;
        forEachPixel(
            {-32768, -32767, -255, -2, -1, 0, 1, 2, 3, 255, 32766, 32767},
            [&](int luma, int redDifference, int blueDifference) {
                planes[0].push_back(static_cast<short>(luma));
                planes[1].push_back(static_cast<short>(redDifference));
                planes[2].push_back(static_cast<short>(blueDifference));
                const int green = luma - ((redDifference + blueDifference) >> 2);
                for (const int colour : {green + redDifference, green, green + blueDifference})
                    append(expected, limited(static_cast<short>(colour), bits), 1);
            });
        expectStored<short>(3, bits, planes, expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, PixelRows, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
