#pragma once

#include <cstring>
#include <string>

#include "container/CompressDriver.h"
#include "container/DecompressDriver.h"
#include "support/LibraryCodec.h"
#include "support/TempDir.h"

// The file drivers, run on files in a temporary folder.

namespace test {

/// What a driver did.
struct DriverRun {
    int result = -1;
    /// Standard output.
    std::string lines;
    /// The output file; for compression without the header, which is not the driver's.
    Bytes output;
};

inline std::FILE* openFile(const std::string& name, const char* mode) {
    std::FILE* file = std::fopen(name.c_str(), mode);
    EXPECT_NE(file, nullptr) << name;
    return file;
}

template <class T>
DriverRun runCompress(const RawImage& image, double rate, bool upper, int extra = 0) {
    const TempDir folder;
    writeFile(folder / "raw", image.bytes);
    DriverRun run;
    testing::internal::CaptureStdout();
    run.result = qmx::compress<T>(headerOf(image), openFile(folder / "raw", "rb"),
                                  openFile(folder / "out", "wb"), rate, upper, extra);
    run.lines = testing::internal::GetCapturedStdout();
    run.output = readFile(folder / "out");
    return run;
}

/// stream: a whole stream file.
template <class T>
DriverRun runDecompress(const Bytes& stream, bool upper, int extra = 0) {
    const TempDir folder;
    writeFile(folder / "stream", stream);
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    std::FILE* in = openFile(folder / "stream", "rb");
    std::fseek(in, sizeof header, SEEK_SET);
    DriverRun run;
    testing::internal::CaptureStdout();
    run.result = qmx::decompress<T>(header, in, openFile(folder / "raw", "wb"), upper, extra);
    run.lines = testing::internal::GetCapturedStdout();
    run.output = readFile(folder / "raw");
    return run;
}

}  // namespace test
