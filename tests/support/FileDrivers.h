#pragma once

#include <cstdlib>
#include <unistd.h>

#include "container/CompressDriver.h"
#include "container/DecompressDriver.h"
#include "support/LibraryCodec.h"

// The file drivers on files in memory, in this process.

namespace test {

/// Takes what goes to standard output while it lives.
class CapturedOutput {
public:
    CapturedOutput() : file(std::tmpfile()), saved(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        dup2(fileno(file.get()), STDOUT_FILENO);
    }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput() {
        std::fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        close(saved);
    }

    std::string text() const {
        std::fflush(stdout);
        std::string text(static_cast<std::size_t>(lseek(fileno(file.get()), 0, SEEK_END)), '\0');
        const ssize_t got = pread(fileno(file.get()), text.data(), text.size(), 0);
        EXPECT_EQ(got, static_cast<ssize_t>(text.size()));
        return text;
    }

private:
    File file;
    int saved;
};

/// A file in memory that somebody else closes.
class WrittenFile {
public:
    WrittenFile() : file(open_memstream(&data, &sizeBytes)) {}
    WrittenFile(const WrittenFile&) = delete;
    WrittenFile& operator=(const WrittenFile&) = delete;
    ~WrittenFile() { std::free(data); }

    std::FILE* get() const { return file; }
    /// Requires: the file is closed.
    Bytes bytes() const { return {data, data + sizeBytes}; }

private:
    char* data = nullptr;
    std::size_t sizeBytes = 0;
    std::FILE* file;
};

inline constexpr int kNoSuchFormat = -1;

/// Calls run.operator()<T>(), which closes two files, or closes them.
template <class Run>
int runDriver(const qmx::TKHeader& header, std::FILE* in, std::FILE* out, Run run) {
    return qmx::dispatchCoefficients(header, qmx::MostBitsOfShort::inFiles, run, [=] {
        std::fclose(in);
        std::fclose(out);
        return kNoSuchFormat;
    });
}

/// Compresses as `c` does, or as `C`, to a whole stream file.
inline Outcome compressFile(const RawImage& image, bool upper, const Wish& wish = {}) {
    const qmx::TKHeader header = headerOf(image);
    Bytes raw = image.bytes;
    std::FILE* in = fmemopen(raw.data(), raw.size(), "rb");
    const WrittenFile out;
    std::fwrite(&header, 1, sizeof header, out.get());
    const CapturedOutput printed;
    Outcome outcome;
    outcome.status = runDriver(header, in, out.get(), [&]<class T>() {
        outcome.report = qmx::compress<T>(header, in, out.get(), wish.rate, upper, wish.extra);
        return 0;
    });
    outcome.lines = printed.text();
    outcome.bytes = out.bytes();
    return outcome;
}

/// Decompresses as `d` does, or as `D`. stream: at least a header.
inline Outcome decompressFile(const Bytes& stream, bool upper, int extra = 0) {
    const qmx::TKHeader header = headerOf(stream);
    Bytes copy = stream;
    std::FILE* in = fmemopen(copy.data(), copy.size(), "rb");
    std::fseek(in, sizeof header, SEEK_SET);
    const WrittenFile out;
    const CapturedOutput printed;
    Outcome outcome;
    outcome.status = runDriver(header, in, out.get(), [&]<class T>() {
        return qmx::decompress<T>(header, in, out.get(), upper, extra);
    });
    outcome.lines = printed.text();
    outcome.bytes = out.bytes();
    return outcome;
}

/// Checks that `d` and `D` come to the same. Returns: their exit status.
inline int expectSameImage(const Bytes& stream, int extra = 0) {
    const Outcome lower = decompressFile(stream, false, extra);
    expectSameOutcome(lower, decompressFile(stream, true, extra));
    EXPECT_TRUE(lower.status == 0 || lower.status == 1) << lower.status;
    EXPECT_EQ(lower.bytes.size(), lower.status == 0 ? headerOf(stream).rawBytes() : 0U);
    return lower.status;
}

}  // namespace test
