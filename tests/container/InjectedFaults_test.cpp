// Faults in what an encoder has made: compression has to find each one that a decoder would show. What decoders
// show is for the plain reference decoder to say.

#include <cstring>
#include <gtest/gtest.h>

#include "container/Comparison.h"
#include "reference/ReferenceDecoder.h"
#include "support/CodedPlane.h"
#include "support/CodedRows.h"
#include "support/CountingHeap.h"
#include "support/EveryDecoder.h"

namespace {

using test::Bytes;
using test::Content;
using test::RawImage;

constexpr test::SampleKind kKinds[] = {{1, 8}, {3, 8}, {2, 11}, {2, 12}, {2, 16}};

/// One in so many faults is injected.
constexpr std::size_t kFaultsBetween = test::kRunsInFull ? 61 : 509;

bool decodersShow(const Bytes& stream, const RawImage& image) {
    const reference::Decoded decoded = reference::decode(stream);
    return decoded.status == 0 && decoded.bytes == image.bytes;
}

bool isFoundGood(const Bytes& stream, const RawImage& image) {
    const qmx::TKHeader header = test::headerOf(image);
    qmx::CPixelsInMemory pixels(image.bytes.data(), header.rawRowBytes());
    const qmx::ImageJob job{header, pixels};
    return qmx::restoresExactly(
        job, {stream.data() + test::kHeaderBytes, stream.size() - test::kHeaderBytes});
}

struct Faults {
    int injected = 0;
    int found = 0;

    /// Takes a stream with a fault in it.
    void expectFound(const Bytes& stream, const RawImage& image) {
        const bool isGood = decodersShow(stream, image);
        ASSERT_EQ(isFoundGood(stream, image), isGood);
        ++injected;
        found += static_cast<int>(!isGood);
    }
    /// Most bits of a stream count.
    void expectMostFound() const {
        std::printf("%d of %d faults are seen by decoders, and found\n", found, injected);
        EXPECT_GT(found, injected * 9 / 10);
        EXPECT_GT(injected, 5);
    }
};

TEST(InjectedFaults, InTheStreamAreFound) {
    for (const auto& [bytesPerPixel, bitsPerPixel] : kKinds) {
        const RawImage image = test::makeImage(Content::photo, bytesPerPixel, bitsPerPixel, 64, 48);
        Bytes stream = test::encode(image);
        ASSERT_TRUE(isFoundGood(stream, image));
        Faults faults;
        for (std::size_t bit = 8 * test::kHeaderBytes; bit < 8 * stream.size();
             bit += kFaultsBetween) {
            stream[bit / 8] ^= static_cast<unsigned char>(1U << bit % 8);
            faults.expectFound(stream, image);
            stream[bit / 8] ^= static_cast<unsigned char>(1U << bit % 8);
            if (testing::Test::HasFatalFailure()) return;
        }
        faults.expectMostFound();
    }
}

/// Returns: all words of the chunks of sections.
template <class T>
std::vector<std::uint64_t*> wordsOf(qmx::CCodedSections<T>& sections) {
    std::vector<std::uint64_t*> words;
    const auto add = [&words](const qmx::CBitChunks& chunks) {
        for (qmx::MemChunk* chunk = chunks.firstChunk(); chunk != nullptr; chunk = chunk->next)
            for (int i = 0; i < chunk->words; ++i)
                words.push_back(chunk->data() + i);
    };
    for (int p = 0; p < sections.shape().planes; ++p)
        for (int o = 0; o <= sections.levels(); ++o)
            for (int b = 0; b <= sections.topPlane(); ++b) {
                const qmx::PlaneSections& plane = sections.streams().of(p, o).bitPlanes[b];
                add(plane.significanceChunks);
                add(plane.refinementChunks);
            }
    return words;
}

template <class T>
void expectSectionFaultsFound(const RawImage& image) {
    const qmx::TKHeader header = test::headerOf(image);
    qmx::CCodedSections<T> sections(qmx::shapeOf(header), std::pmr::new_delete_resource());
    test::RawRows<T> source(image);
    qmx::encodeRows(source, sections, {});
    const auto stream = [&] {
        Bytes bytes(sections.facts().streamBytes());
        qmx::CBitWriter writer(bytes.data(), bytes.size());
        sections.writeStream(writer);
        return test::headed(header, bytes);
    };
    const Bytes good = stream();
    ASSERT_TRUE(isFoundGood(good, image));
    Faults faults;
    std::size_t bit = 0;
    for (std::uint64_t* word : wordsOf(sections))
        for (int i = 0; i < 64; ++i) {
            if (++bit % kFaultsBetween != 0) continue;
            *word ^= std::uint64_t{1} << i;
            // Bits that no section holds are not written.
            if (const Bytes bad = stream(); bad != good) faults.expectFound(bad, image);
            *word ^= std::uint64_t{1} << i;
            if (testing::Test::HasFatalFailure()) return;
        }
    ASSERT_EQ(stream(), good);
    faults.expectMostFound();
}

TEST(InjectedFaults, InTheSectionsAreFound) {
    for (const auto& [bytesPerPixel, bitsPerPixel] : kKinds) {
        const RawImage image = test::makeImage(Content::photo, bytesPerPixel, bitsPerPixel, 64, 48);
        if (bitsPerPixel > 12) {
            expectSectionFaultsFound<int>(image);
        } else {
            expectSectionFaultsFound<short>(image);
        }
    }
}

/// Returns: the samples of a gray image.
reference::Plane planeOf(const RawImage& image) {
    reference::Plane plane(image.width, image.height);
    for (std::size_t i = 0; i < plane.values.size(); ++i)
        plane.values[i] = image.bytesPerPixel == 1
                              ? image.bytes[i]
                              : image.bytes[2 * i] | image.bytes[2 * i + 1] << 8;
    return plane;
}

TEST(InjectedFaults, InTheCoefficientsAreFound) {
    for (const auto& [bytesPerPixel, bitsPerPixel] : kKinds) {
        if (bytesPerPixel == 3) continue;
        const RawImage image = test::makeImage(Content::photo, bytesPerPixel, bitsPerPixel, 64, 48);
        reference::Plane plane = planeOf(image);
        reference::forwardTransform(plane, 32);
        ASSERT_TRUE(isFoundGood(test::streamWith(plane, test::headerOf(image)), image));
        Faults faults;
        for (std::size_t i = 0; i < plane.values.size(); i += kFaultsBetween)
            for (const int bit : {0, 3, bitsPerPixel - 1}) {
                const std::int64_t good = plane.values[i];
                plane.values[i] ^= std::int64_t{1} << bit;
                faults.expectFound(test::streamWith(plane, test::headerOf(image)), image);
                plane.values[i] = good;
                if (testing::Test::HasFatalFailure()) return;
            }
        EXPECT_EQ(faults.found, faults.injected);
    }
}

/// An allocator that counts its blocks and flips a bit when it is asked for one of them.
struct FaultyHeap {
    int blocks = 0;
    int faultyBlock = -1;
    unsigned char* byte = nullptr;
    unsigned char mask = 0;

    tesk_options options(std::uint32_t flags) {
        tesk_options chosen = TESK_OPTIONS_INIT;
        chosen.flags = flags;
        chosen.user = this;
        chosen.allocate = [](void* user, std::size_t size) {
            auto* heap = static_cast<FaultyHeap*>(user);
            if (heap->blocks++ == heap->faultyBlock) *heap->byte ^= heap->mask;
            return std::malloc(size);
        };
        chosen.release = [](void*, void* memory) { std::free(memory); };
        return chosen;
    }
};

test::Call compressInto(Bytes& out, const RawImage& image, FaultyHeap& heap, std::uint32_t flags) {
    const tesk_options options = heap.options(flags);
    const tesk_image geometry = test::geometryOf(image);
    test::Call call;
    call.status = tesk_compress(test::makeCodec(&options).get(), &geometry, image.bytes.data(), 0,
                                0, out.data(), out.size(), &call.result);
    return call;
}

TEST(InjectedFaults, InAStreamThatWasJustWrittenAreFound) {
    // The first word has been read when the comparison takes its first block.
    constexpr std::size_t kFirstByte = test::kHeaderBytes + 8;
    for (const auto& [bytesPerPixel, bitsPerPixel] : kKinds) {
        const RawImage image = test::makeImage(Content::photo, bytesPerPixel, bitsPerPixel, 64, 48);
        FaultyHeap writing;
        Bytes good(2 * image.bytes.size() + 1000);
        good.resize(compressInto(good, image, writing, TESK_UNVERIFIED).result.stream_bytes);
        test::Random random(3);
        int refused = 0;
        for (int i = 0; i < (test::kRunsInFull ? 100 : 20); ++i) {
            Bytes stream(good.size());
            const std::size_t bit = 8 * kFirstByte + random.below(8 * (good.size() - kFirstByte));
            FaultyHeap heap;
            // The first block of the comparison.
            heap.faultyBlock = writing.blocks;
            heap.byte = &stream[bit / 8];
            heap.mask = static_cast<unsigned char>(1U << bit % 8);
            const test::Call call = compressInto(stream, image, heap, 0);
            ASSERT_NE(stream, good) << "no fault";
            ASSERT_EQ(call.status == TESK_OK, decodersShow(stream, image)) << bit;
            if (call.status == TESK_OK) continue;
            ++refused;
            ASSERT_EQ(call.status, TESK_NOT_RESTORABLE);
            ASSERT_EQ(call.result.loss, TESK_LOSS_UNKNOWN);
        }
        EXPECT_GT(refused, 0);
    }
}

}  // namespace
