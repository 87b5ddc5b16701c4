// The kernel of the coefficient decoder alone: sections, windows and rows that stand between pages which may
// not be touched.

#include "coding/decode/DecodeKernels.h"

#include <list>

#include "reference/ReferenceSections.h"
#include "support/CpuLevels.h"
#include "support/FoldedData.h"
#include "support/GuardedBuffer.h"
#include "support/KernelData.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::Density;
using test::GuardedBuffer;
using test::kLongestRow;
using test::Side;

/// Coefficients that rows of all lengths need.
constexpr std::size_t kMostCoefficients = kLongestRow * (kLongestRow + 1) / 2;
/// The least that a window may hold, so that it is filled most often, and more.
constexpr std::uint32_t kLeastCapacity = 256;
constexpr std::uint32_t kLargerCapacity = 4160;

/// Where the evens and odds of a line go.
enum class Place { together, apart };
constexpr Place kPlaces[] = {Place::together, Place::apart};

/// The sections that a stream has got: those of bit planes from `lowest` on, and above `unrefined`.
struct Cut {
    int lowest;
    int unrefined;
};
constexpr Cut kWhole{0, -1};
/// What the decoder is told about where the n sections end.
enum class Ends { unknown, known, tooEarly };
constexpr Ends kEnds[] = {Ends::unknown, Ends::known, Ends::tooEarly};
constexpr Cut kCuts[] = {kWhole, {0, 2}, {2, 2}, {3, 1}, {1, 5}, {9, 16}};

/// Coefficients of one order, and the payloads of their sections.
template <class T>
struct CodedOrder {
    explicit CodedOrder(Density density)
        : CodedOrder(test::foldedData<T>(density, kMostCoefficients, 1)) {}
    explicit CodedOrder(std::vector<T> foldedValues) : folded(std::move(foldedValues)) {
        const reference::FoldedValues values(folded.begin(), folded.end());
        std::int64_t all = 0;
        for (const std::int64_t value : values)
            all |= reference::magnitude(value);
        for (int p = 0; p < bitLength(static_cast<std::uint64_t>(all)); ++p) {
            const auto payload = reference::nSection(values, p).payload;
            significances.push_back(payload.toBytes());
            significanceBits.push_back(payload.size());
            refinements.push_back(reference::uSection(values, p).payload.toBytes());
        }
    }

    std::vector<T> folded;
    std::vector<Bytes> significances;
    std::vector<std::uint64_t> significanceBits;
    std::vector<Bytes> refinements;
};

/// The sections while they are being decoded.
template <class T>
class GuardedSections {
public:
    GuardedSections(const CodedOrder<T>& coded, Cut cut, Side bufferSide, std::uint32_t capacity,
                    Ends ends)
        : side(bufferSide) {
        open.highest = static_cast<int>(coded.significances.size()) - 1;
        open.lowest = cut.lowest;
        open.unrefined = cut.unrefined;
        open.capacity = capacity;
        open.left = coded.folded.size();
        for (int p = 0; p <= open.highest; ++p) {
            const auto place = static_cast<std::size_t>(p);
            read(significances[p], coded.significances[place]);
            decoders[p].attach(&significances[p]);
            unsigned char* const fresh = bitmap();
            const std::uint64_t bits = coded.significanceBits[place];
            const std::uint64_t end = ends == Ends::unknown ? kNoEnd
                                      : ends == Ends::known ? bits
                                                            : bits / 2;
            open.windows[p] = {&decoders[p], fresh, bitmap(), 0, 0, decoders[p].getRun(), end};
            read(refinements[p], coded.refinements[place]);
            open.refinements[p] = {&refinements[p], refinements[p].loadedBits()};
        }
    }

    OrderWindows<T> open{};

private:
    unsigned char* buffer(const Bytes& bytes) { return buffers.emplace_back(bytes, side).data(); }
    unsigned char* bitmap() {
        return buffer(Bytes(open.capacity / 8 + SectionWindow::kSlackBytes));
    }
    void read(CBitInfiniteReader& reader, const Bytes& payload) {
        CBitReader source(buffer(payload), payload.size());
        reader.create(&source, 8 * payload.size());
    }

    Side side;
    std::list<GuardedBuffer<unsigned char>> buffers;
    CBitInfiniteReader significances[kTableBitPlanes<T>];
    CBitInfiniteReader refinements[kTableBitPlanes<T>];
    CBitDecoder decoders[kTableBitPlanes<T>];
};

template <class T>
using Rows = std::vector<std::vector<T>>;

/// Decodes a line of so many coefficients.
template <class T>
std::vector<T> decodeLine(const DecodeKernels<T>& kernels, OrderWindows<T>& sections, Place place,
                          Side side, std::size_t count) {
    const std::size_t oddCount = place == Place::apart ? count / 2 : 0;
    const GuardedBuffer<T> first(std::vector<T>(count - oddCount), side);
    const GuardedBuffer<T> odds(std::vector<T>(oddCount), side);
    kernels.decodeLine(sections, first.data(), place == Place::apart ? odds.data() : nullptr,
                       static_cast<int>(count));
    std::vector<T> line(count);
    for (std::size_t c = 0; c < count; ++c)
        line[c] = place == Place::together ? first.data()[c]
                  : c % 2 == 0             ? first.data()[c / 2]
                                           : odds.data()[c / 2];
    return line;
}

/// Decodes lines of all lengths up to kLongestRow, one after the other.
template <class T>
Rows<T> decodeRows(CpuLevel level, const CodedOrder<T>& coded, Cut cut, Place place, Side side,
                   std::uint32_t capacity = kLeastCapacity, Ends ends = Ends::unknown) {
    const auto sections = std::make_unique<GuardedSections<T>>(coded, cut, side, capacity, ends);
    const auto& kernels = kernelsAt<DecodeKernels<T>>(level);
    Rows<T> rows;
    for (std::size_t count = 0; count <= kLongestRow; ++count)
        rows.push_back(decodeLine(kernels, sections->open, place, side, count));
    return rows;
}

template <class T>
Rows<T> expectedRows(const std::vector<T>& folded) {
    Rows<T> rows;
    auto next = folded.begin();
    for (std::size_t count = 0; count <= kLongestRow; ++count)
        for (std::vector<T>& row = rows.emplace_back(); row.size() < count;) {
            const std::int64_t value = *next++;
            const auto magnitude = static_cast<T>(reference::magnitude(value));
            row.push_back(static_cast<T>(value % 2 != 0 ? -magnitude : magnitude));
        }
    return rows;
}

using DecodeKernelsTest = test::AtCpuLevel;

template <class T>
void expectLines(CpuLevel level, Density density) {
    const CodedOrder<T> coded(density);
    for (const Place place : kPlaces)
        for (const Side side : test::kBothSides) {
            SCOPED_TRACE(testing::Message()
                         << sizeof(T) << " bytes, " << nameOf(density) << ", " << nameOf(side)
                         << ", apart " << (place == Place::apart));
            for (const std::uint32_t capacity : {kLeastCapacity, kLargerCapacity})
                for (const Ends ends : kEnds)
                    ASSERT_EQ(decodeRows(level, coded, kWhole, place, side, capacity, ends),
                              expectedRows(coded.folded))
                        << capacity << ", ends " << static_cast<int>(ends);
            for (const Cut& cut : kCuts)
                ASSERT_EQ(decodeRows(level, coded, cut, place, side),
                          decodeRows(CpuLevel::scalar, coded, cut, place, side))
                    << cut.lowest << ", " << cut.unrefined;
        }
}

TEST_P(DecodeKernelsTest, RowsOfAllLengthsBetweenGuardPagesAreDecoded) {
    for (const Density density : test::kDensities) {
        expectLines<short>(GetParam(), density);
        expectLines<int>(GetParam(), density);
    }
}

/// Folded values of 0 and magnitudes of 1 bit: runs of zeros up to the longest that so many bits hold, each
/// number of bits as often as another one.
std::vector<short> valuesBetweenRuns(unsigned mostRunBits, std::uint64_t seed) {
    test::Random random(seed);
    std::vector<short> folded(kMostCoefficients);
    for (std::size_t i = 0; i < folded.size();
         i += 1 + random.below(std::uint64_t{1} << random.below(mostRunBits + 1)))
        folded[i] = static_cast<short>(2 + random.below(2));
    return folded;
}

// Batches of look-ups that begin at all distances from the end of a window, with short runs behind them that fill
// the words that are stored, and long ones that end anywhere behind the window: runs of 0 to 9 zeros and a suffix stand
// in a look-up, others do not.
TEST_P(DecodeKernelsTest, RunsOfAllLengthsEndWindowsBetweenGuardPages) {
    for (const unsigned mostRunBits : {1U, 3U, 4U, 5U, 8U, 9U, 10U, 12U})
        for (const Side side : test::kBothSides)
            for (std::uint64_t seed = 1; seed <= 5; ++seed) {
                const CodedOrder<short> coded(valuesBetweenRuns(mostRunBits, seed));
                ASSERT_EQ(decodeRows(GetParam(), coded, kWhole, Place::together, side),
                          expectedRows(coded.folded))
                    << mostRunBits << ", seed " << seed;
            }
}

INSTANTIATE_TEST_SUITE_P(Levels, DecodeKernelsTest, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
