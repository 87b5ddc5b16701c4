#pragma once

#include <array>
#include <optional>
#include <string>
#include <sys/stat.h>

#include "convert/CFileNumber.h"
#include "convert/IByteSink.h"

namespace qmx {

/// How an output file comes to its name.
struct OutputRules {
    /// A file that is there is replaced.
    bool overwrites = false;
    /// The file and its name are on the disk before finish returns.
    bool reachesDisk = false;
    /// Who may do what with it; without it, what new files get.
    std::optional<mode_t> permissions = std::nullopt;
    /// When it was last read and changed; without it, now.
    std::optional<std::array<timespec, 2>> times = std::nullopt;
};

/// A file that is written under a temporary name beside its own, and gets its name when it is complete: what has the
/// name is whole, whenever the process ends. What is left without finish is removed. A device or a pipe is
/// written as it is.
class COutputFile final : public IByteSink {
public:
    /// Throws: Refusal where the name is taken, or nothing can be written there.
    COutputFile(const std::string& outputName, OutputRules outputRules);
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;
    ~COutputFile() override;

    using IByteSink::write;
    void write(ByteView bytes) override;
    /// Gives the file its name. Throws: Refusal where that cannot be done, or the name was taken meanwhile.
    void finish();

private:
    void takeName();

    std::string name;
    std::string partName;
    OutputRules rules;
    CFileNumber file;
};

/// Lets the names in a folder reach the disk. Throws: Refusal.
void syncFolder(const std::string& folder);

/// Throws: Refusal where a file of this name is there. Nothing is promised for later.
void requireFreeName(const std::string& name);

/// The standard output.
class CStandardOutput final : public IByteSink {
public:
    using IByteSink::write;
    void write(ByteView bytes) override;
};

/// Whether a name is that of a file which is being written, or was left behind by a process that was killed.
bool isPartName(const std::string& fileName);

}  // namespace qmx
