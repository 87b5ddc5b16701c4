// Runs a fuzz target on files and on all files of folders: `TARGET [--cpu-level=LEVEL] FILE|FOLDER
// ...`. So that no corpus rots, this is an ordinary test wherever libFuzzer is not. Targets that go
// through the levels themselves take no notice of the argument.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "support/CpuLevelArgument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Paths = std::vector<std::filesystem::path>;

Paths filesOf(int argc, char** argv) {
    Paths files;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            files.emplace_back(argv[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
            if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    const qmx::CCpuLevelGuard guard(test::takeCpuLevel(argc, argv));
    const Paths files = filesOf(argc, argv);
    for (const auto& path : files) {
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        if (argc < 4) std::fprintf(stderr, "%s\n", path.c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu files replayed\n", files.size());
    return files.empty() ? 1 : 0;
}
