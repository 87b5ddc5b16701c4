#pragma once

#include <malloc.h>

#include "support/Ways.h"

// One stream through every decoder there is: the drivers behind `d` and `D`, the object behind `dc`,
// and the C interface, twice with memory that was filled differently before.

namespace test {

#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
// A sanitizer makes each decode ten times slower, and one full run of a check is enough.
inline constexpr bool kRunsInFull = false;
#else
inline constexpr bool kRunsInFull = true;
#endif

struct DecodedCounts {
    int complete = 0;
    int cut = 0;
    int invalid = 0;
    int unsupported = 0;
};

class EveryDecoder {
public:
    EveryDecoder() {
        // New memory of the drivers and the object. The sanitizers' malloc fills by itself.
        mallopt(M_PERTURB, kPerturbation);
    }
    EveryDecoder(const EveryDecoder&) = delete;
    EveryDecoder& operator=(const EveryDecoder&) = delete;
    ~EveryDecoder() {
        mallopt(M_PERTURB, 0);
        std::printf("complete %d, cut %d, invalid %d, unsupported %d\n", counts.complete,
                    counts.cut, counts.invalid, counts.unsupported);
    }

    /// Decodes in every way and compares. Fatal failures are for the caller to look for.
    void expectOneAnswer(const Bytes& stream) {
        const Answer zeros = ask(codecOfZeros.get(), stream, fillers[0]);
        const Answer others = ask(codecOfOthers.get(), stream, fillers[1]);
        ASSERT_EQ(zeros.status, others.status);
        if (zeros.isUsable()) {
            ASSERT_TRUE(sameBytes(zeros.out, others.out)) << "depends on old memory";
        } else {
            expectUntouched(zeros.out, fillers[0]);
            expectUntouched(others.out, fillers[1]);
        }
        count(zeros.status);
        if (stream.size() < kHeaderBytes || !isRecognised(stream)) return expectNoImage(zeros);
        expectObject(stream, zeros);
        // The two profiles take 12 bits for different ones.
        if (stream[4] != 2 || stream[5] != 12) expectDrivers(stream, zeros);
    }

    DecodedCounts counts;

private:
    static constexpr int kPerturbation = 0x5A;

    struct Answer {
        tesk_status status;
        /// As the call left it.
        Bytes out;

        bool isUsable() const { return status == TESK_OK || status == TESK_CUT; }
    };

    /// Hooks that fill all memory with one byte, so that what is not written shows.
    static tesk_options filledWith(unsigned char& filler) {
        tesk_options options = TESK_OPTIONS_INIT;
        options.allocate = [](void* user, std::size_t size) {
            void* memory = std::malloc(size);
            if (memory != nullptr) std::memset(memory, *static_cast<unsigned char*>(user), size);
            return memory;
        };
        options.release = [](void*, void* memory) { std::free(memory); };
        options.user = &filler;
        return options;
    }

    static bool isRecognised(const Bytes& stream) {
        return std::memcmp(stream.data(), qmx::TKHeader::kMagic, sizeof qmx::TKHeader::kMagic) == 0;
    }

    /// out has one byte more than the image, which nobody may write.
    static Answer ask(tesk_codec* codec, const Bytes& stream, unsigned char filler) {
        const std::size_t size = stream.size() < kHeaderBytes ? 0 : headerOf(stream).rawBytes();
        Answer answer{TESK_INVALID_ARGUMENT, Bytes(size + 1, filler)};
        // Exactly as long as it says, so that a sanitizer sees a read behind it.
        const std::unique_ptr<unsigned char[]> exact(new unsigned char[stream.size()]);
        std::copy(stream.begin(), stream.end(), exact.get());
        answer.status =
            tesk_decompress(codec, exact.get(), stream.size(), answer.out.data(), size, 0, nullptr);
        EXPECT_EQ(answer.out.back(), filler);
        answer.out.back() = answer.isUsable() ? 0 : filler;
        return answer;
    }

    static void expectUntouched(const Bytes& out, unsigned char filler) {
        ASSERT_TRUE(sameBytes(Bytes(out.size(), filler), out)) << "written without a result";
    }

    static void expectNoImage(const Answer& answer) {
        ASSERT_EQ(answer.status, TESK_INVALID_STREAM);
    }

    static void expectDrivers(const Bytes& stream, const Answer& expected) {
        const int status = expected.isUsable()                          ? 0
                           : expected.status == TESK_UNSUPPORTED_FORMAT ? kNoSuchFormat
                                                                        : 1;
        for (const bool upper : {false, true}) {
            const Outcome driver = decompressFile(stream, upper);
            ASSERT_EQ(driver.status, status);
            ASSERT_TRUE(
                sameBytes(expected.isUsable() ? withoutEnd(expected.out) : Bytes(), driver.bytes));
        }
    }

    static void expectObject(const Bytes& stream, const Answer& expected) {
        constexpr unsigned char kFiller = 0x3C;
        qmx::CTeskDecompressor decompressor(stream.data(), stream.size());
        Bytes pixels(headerOf(stream).rawBytes(), kFiller);
        const int result = decompressor.decompress(pixels.data(), pixels.size());
        ASSERT_EQ(result, resultOf(stream, expected.status));
        if (!qmx::isUsable(result)) return expectUntouched(pixels, kFiller);
        ASSERT_TRUE(sameBytes(withoutEnd(expected.out), pixels));
    }

    static Bytes withoutEnd(Bytes bytes) {
        bytes.pop_back();
        return bytes;
    }

    /// Nothing but a header is an early end for the C interface and no stream for the object.
    static int resultOf(const Bytes& stream, tesk_status status) {
        if (stream.size() == kHeaderBytes) return qmx::kInvalidSection;
        if (status == TESK_OK) return qmx::kComplete;
        return status == TESK_CUT ? qmx::kCut : qmx::kInvalidSection;
    }

    void count(tesk_status status) {
        switch (status) {
            case TESK_OK:
                ++counts.complete;
                break;
            case TESK_CUT:
                ++counts.cut;
                break;
            case TESK_INVALID_STREAM:
                ++counts.invalid;
                break;
            case TESK_UNSUPPORTED_FORMAT:
                ++counts.unsupported;
                break;
            default:
                FAIL() << "status " << status;
        }
    }

    unsigned char fillers[2] = {0x00, 0xA5};
    tesk_options ofZeros = filledWith(fillers[0]);
    tesk_options ofOthers = filledWith(fillers[1]);
    Codec codecOfZeros = makeCodec(&ofZeros);
    Codec codecOfOthers = makeCodec(&ofOthers);
};

}  // namespace test
